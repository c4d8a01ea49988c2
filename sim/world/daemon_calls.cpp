#include "daemon_calls.h"

#include <cstdint>
#include <limits>

namespace sim {

namespace {

using android::hardware::hidl_vec;
using android::hardware::gnss::V1_0::GnssLocation;
using android::hardware::gnss::V1_0::IGnssGeofenceCallback;
using vendor::zendra::hardware::fusd::V1_2::GeofenceResult;
using vendor::zendra::hardware::fusd::V1_2::IFusdGeofenceCallback;
using vendor::zendra::hardware::fusd::V1_2::IFusdGnssCallback;
using Args = std::vector<Token>;  // the operation's arguments, without its name

bool parseInt32(const Token& t, int32_t* out, std::string* error) {
    int64_t value;
    if (!parseInt64(t, &value, error)) return false;
    if (value < std::numeric_limits<int32_t>::min() ||
        value > std::numeric_limits<int32_t>::max()) {
        *error = "'" + t.text + "' does not fit in 32 bits";
        return false;
    }
    *out = static_cast<int32_t>(value);
    return true;
}

template <typename E>
bool parseEnum(const Token& t, E* out, std::string* error) {
    int32_t value;
    if (!parseInt32(t, &value, error)) return false;
    *out = static_cast<E>(value);
    return true;
}

bool reportFusdLocation(const Args& a, DaemonCall* call, std::string* error) {
    GnssLocation location;
    if (!parseLocation(a[0], &location, error)) return false;
    call->toGnss = [location](IFusdGnssCallback& cb) { return cb.reportFusdLocation(location); };
    return true;
}

bool geofenceAddResultCb(const Args& a, DaemonCall* call, std::string* error) {
    hidl_vec<GeofenceResult> results;
    if (!parseGeofenceResults(a[0], &results, error)) return false;
    call->toGeofence = [results](IFusdGeofenceCallback& cb) {
        return cb.geofenceAddResultCb(results);
    };
    return true;
}

bool geofenceRemoveResultCb(const Args& a, DaemonCall* call, std::string* error) {
    hidl_vec<GeofenceResult> results;
    if (!parseGeofenceResults(a[0], &results, error)) return false;
    call->toGeofence = [results](IFusdGeofenceCallback& cb) {
        return cb.geofenceRemoveResultCb(results);
    };
    return true;
}

bool onGetCurrentLocationCb(const Args& a, DaemonCall* call, std::string* error) {
    int32_t source;
    GnssLocation location;
    int64_t requestId, elapsedMs;
    if (!parseInt32(a[0], &source, error) || !parseLocation(a[1], &location, error) ||
        !parseInt64(a[2], &requestId, error) || !parseInt64(a[3], &elapsedMs, error)) {
        return false;
    }
    call->toGeofence = [=](IFusdGeofenceCallback& cb) {
        return cb.onGetCurrentLocationCb(source, location, requestId, elapsedMs);
    };
    return true;
}

bool gnssGeofenceTransitionCb(const Args& a, DaemonCall* call, std::string* error) {
    int32_t id;
    GnssLocation location;
    IGnssGeofenceCallback::GeofenceTransition transition;
    int64_t timestamp;
    if (!parseInt32(a[0], &id, error) || !parseLocation(a[1], &location, error) ||
        !parseEnum(a[2], &transition, error) || !parseInt64(a[3], &timestamp, error)) {
        return false;
    }
    call->toGeofence = [=](IFusdGeofenceCallback& cb) {
        return cb.gnssGeofenceTransitionCb(id, location, transition, timestamp);
    };
    return true;
}

bool gnssGeofenceStatusCb(const Args& a, DaemonCall* call, std::string* error) {
    int32_t availability;
    GnssLocation location;
    if (!parseInt32(a[0], &availability, error) || !parseLocation(a[1], &location, error)) {
        return false;
    }
    call->toGeofence = [=](IFusdGeofenceCallback& cb) {
        return cb.gnssGeofenceStatusCb(availability, location);
    };
    return true;
}

// Pause and resume results share their arguments: a geofence id and a status.
template <bool kPause>
bool geofencePauseOrResumeCb(const Args& a, DaemonCall* call, std::string* error) {
    int32_t id;
    IGnssGeofenceCallback::GeofenceStatus status;
    if (!parseInt32(a[0], &id, error) || !parseEnum(a[1], &status, error)) return false;
    call->toGeofence = [=](IFusdGeofenceCallback& cb) {
        return kPause ? cb.gnssGeofencePauseCb(id, status) : cb.gnssGeofenceResumeCb(id, status);
    };
    return true;
}

struct Parser {
    const char* op;
    size_t arity;
    bool (*parse)(const Args&, DaemonCall*, std::string*);
};

const Parser kParsers[] = {
    {"reportFusdLocation", 1, reportFusdLocation},
    {"geofenceAddResultCb", 1, geofenceAddResultCb},
    {"geofenceRemoveResultCb", 1, geofenceRemoveResultCb},
    {"onGetCurrentLocationCb", 4, onGetCurrentLocationCb},
    {"gnssGeofenceTransitionCb", 4, gnssGeofenceTransitionCb},
    {"gnssGeofenceStatusCb", 2, gnssGeofenceStatusCb},
    {"gnssGeofencePauseCb", 2, geofencePauseOrResumeCb<true>},
    {"gnssGeofenceResumeCb", 2, geofencePauseOrResumeCb<false>},
};

const Parser* parserOf(const std::string& op) {
    for (const Parser& parser : kParsers) {
        if (op == parser.op) return &parser;
    }
    return nullptr;
}

}  // namespace

bool isDaemonCall(const std::string& op) {
    return parserOf(op) != nullptr;
}

std::vector<std::string> daemonCallNames() {
    std::vector<std::string> names;
    for (const Parser& parser : kParsers) names.push_back(parser.op);
    return names;
}

bool parseDaemonCall(const std::vector<Token>& words, DaemonCall* call, std::string* error) {
    const Parser* parser = words.empty() ? nullptr : parserOf(words[0].text);
    if (parser == nullptr) {
        *error = "no callback operation '" + (words.empty() ? "" : words[0].text) + "'";
        return false;
    }
    Args args(words.begin() + 1, words.end());
    if (args.size() != parser->arity) {
        *error = std::string(parser->op) + " takes " + std::to_string(parser->arity) + " argument" +
                 (parser->arity == 1 ? "" : "s");
        return false;
    }
    *call = DaemonCall();
    return parser->parse(args, call, error);
}

}  // namespace sim
