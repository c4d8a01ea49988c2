// Reading a call's arguments.
#include "call_args.h"

namespace sim {

namespace gnss_v1 = android::hardware::gnss::V1_0;
namespace gnss_v2 = android::hardware::gnss::V2_0;

namespace {

const char* objectName(FrameworkObject object) {
    switch (object) {
        case FrameworkObject::GnssCb:
            return "gnssCb";
        case FrameworkObject::GeofenceCb:
            return "geofenceCb";
        case FrameworkObject::CorvaneCb:
            return "corvaneCb";
        case FrameworkObject::FdCallback:
            return "fdCallback";
        case FrameworkObject::Null:
            break;
    }
    return "null";
}

bool isBare(const Token* t, const char* word) {
    return !t->quoted && t->text == word;
}

}  // namespace

CallArgs::CallArgs(std::string function, std::vector<Token> args)
    : mFunction(std::move(function)), mArgs(std::move(args)) {}

const Token* CallArgs::next(const char* what) {
    if (!hasMore()) {
        fail(std::string("missing argument ") + std::to_string(mNext + 1) + " (" + what + ")");
        return nullptr;
    }
    return &mArgs[mNext++];
}

bool CallArgs::check(bool ok) {
    if (!ok) mError = mFunction + ": argument " + std::to_string(mNext) + ": " + mError;
    return ok;
}

bool CallArgs::fail(const std::string& reason) {
    mError = mFunction + ": " + reason;
    return false;
}

bool CallArgs::done() {
    if (!hasMore()) return true;
    return fail("too many arguments, from \"" + mArgs[mNext].text + "\" on");
}

bool CallArgs::real(double* out) {
    const Token* t = next("a number");
    return t && check(parseDouble(*t, out, &mError));
}

bool CallArgs::boolean(bool* out) {
    const Token* t = next("true or false");
    return t && check(parseBool(*t, out, &mError));
}

bool CallArgs::string(android::hardware::hidl_string* out) {
    const Token* t = next("a string");
    if (!t) return false;
    if (isBare(t, "null")) {
        mError = "this string cannot be null";
        return check(false);
    }
    *out = android::hardware::hidl_string(t->text.data(), t->text.size());
    return true;
}

bool CallArgs::cString(std::string* text, bool* isNull) {
    const Token* t = next("a string or null");
    if (!t) return false;
    *isNull = isBare(t, "null");
    *text = *isNull ? std::string() : t->text;
    return true;
}

bool CallArgs::bytes(std::vector<uint8_t>* out, bool* isNull) {
    const Token* t = next("bytes");
    return t && check(parseBytes(*t, out, isNull, &mError));
}

bool CallArgs::object(FrameworkObject expected, FrameworkObject* out) {
    const Token* t = next(objectName(expected));
    if (!t) return false;
    if (isBare(t, "null") || isBare(t, objectName(expected))) {
        *out = isBare(t, "null") ? FrameworkObject::Null : expected;
        return true;
    }
    mError = std::string("expected ") + objectName(expected) + " or null, got \"" + t->text + "\"";
    return check(false);
}

bool CallArgs::outParam(bool* wanted) {
    const Token* t = next("out or null");
    if (!t) return false;
    *wanted = isBare(t, "out");
    if (*wanted || isBare(t, "null")) return true;
    mError = "expected out or null, got \"" + t->text + "\"";
    return check(false);
}

bool CallArgs::emptyWeakReference() {
    const Token* t = next("null");
    if (!t) return false;
    if (isBare(t, "null")) return true;
    mError = "expected null (an empty weak reference), got \"" + t->text + "\"";
    return check(false);
}

bool CallArgs::location(gnss_v1::GnssLocation* out) {
    const Token* t = next("loc{...}");
    return t && check(parseLocation(*t, out, &mError));
}

bool CallArgs::location2(gnss_v2::GnssLocation* out) {
    const Token* t = next("loc2{...}");
    return t && check(parseLocation2(*t, out, &mError));
}

bool CallArgs::svStatus(gnss_v1::IGnssCallback::GnssSvStatus* out) {
    const Token* t = next("sv1{...}");
    return t && check(parseSvStatus(*t, out, &mError));
}

bool CallArgs::svList(android::hardware::hidl_vec<gnss_v2::IGnssCallback::GnssSvInfo>* out) {
    const Token* t = next("sv2{...}");
    return t && check(parseSvList(*t, out, &mError));
}

}  // namespace sim
