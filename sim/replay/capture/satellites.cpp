#include "satellites.h"

#include <optional>

#include "nmea_fields.h"

namespace replay {
namespace {

constexpr size_t kGsvFirstBlock = 3;
constexpr size_t kGsvBlockSize = 4;
constexpr size_t kGsaFirstPrn = 2;
constexpr size_t kGsaPrnSlots = 12;
constexpr size_t kGsaSystemId = 17;
constexpr int kLargestPrn = 999;

// A PRN field naming a satellite: a number from 1 to the largest any system uses.
std::optional<int> readPrn(std::string_view field) {
    std::optional<int> prn = readInteger(field);
    if (!prn || *prn < 1 || *prn > kLargestPrn) return std::nullopt;
    return prn;
}

// Each constellation's svid in the numbering the HAL reports: NMEA's extended PRN ranges
// (GLONASS 65-96, BeiDou 201-, Galileo 301-) fold back to the satellite's own number, and
// QZSS 1-10 moves up to 193-202.
int svidFor(uint8_t constellation, int prn) {
    switch (constellation) {
        case kGlonass:
            return prn >= 65 && prn <= 96 ? prn - 64 : prn;
        case kBeidou:
            return prn > 200 && prn <= 300 ? prn - 200 : prn;
        case kGalileo:
            return prn > 300 && prn <= 400 ? prn - 300 : prn;
        case kQzss:
            return prn >= 1 && prn <= 10 ? prn + 192 : prn;
        default:
            return prn;
    }
}

uint8_t constellationOfPrnRange(int prn) {
    if (prn >= 1 && prn <= 32) return kGps;
    if (prn >= 33 && prn <= 64) return kSbas;
    if (prn >= 65 && prn <= 96) return kGlonass;
    if (prn >= 193 && prn <= 200) return kQzss;
    if (prn >= 201 && prn <= 237) return kBeidou;
    if (prn >= 301 && prn <= 336) return kGalileo;
    return kUnknownConstellation;
}

uint8_t constellationOfTalker(std::string_view talker, int prn) {
    if (talker == "GP") return prn >= 33 && prn <= 64 ? kSbas : kGps;
    if (talker == "GL") return kGlonass;
    if (talker == "GA") return kGalileo;
    if (talker == "GB" || talker == "BD") return kBeidou;
    if (talker == "GQ" || talker == "QZ") return kQzss;
    if (talker == "GI") return kIrnss;
    return constellationOfPrnRange(prn);
}

SatelliteId identify(uint8_t constellation, int prn) {
    return SatelliteId{constellation, svidFor(constellation, prn)};
}

float numberOrZero(std::string_view field) {
    return static_cast<float>(readNumber(field).value_or(0));
}

}  // namespace

SatelliteId satelliteFromTalker(std::string_view talker, int prn) {
    return identify(constellationOfTalker(talker, prn), prn);
}

SatelliteId satelliteFromSystemId(int systemId, int prn) {
    switch (systemId) {
        case 1:
            return identify(prn >= 33 && prn <= 64 ? kSbas : kGps, prn);
        case 2:
            return identify(kGlonass, prn);
        case 3:
            return identify(kGalileo, prn);
        case 4:
            return identify(kBeidou, prn);
        case 5:
            return identify(kQzss, prn);
        case 6:
            return identify(kIrnss, prn);
        default:
            return identify(constellationOfPrnRange(prn), prn);
    }
}

// Four fields per satellite after the page header; a last odd field is the signal id. A
// block that is empty throughout pads the last page and is not counted as missing data.
void SatelliteCollector::addGsv(const NmeaSentence& gsv, SkipCounts* skipped) {
    mHeardAny = true;
    if (gsv.fields.size() < kGsvFirstBlock) {
        ++skipped->emptyFields;
        return;
    }
    bool missingSvid = false;
    size_t blocks = (gsv.fields.size() - kGsvFirstBlock) / kGsvBlockSize;
    for (size_t block = 0; block < blocks; ++block) {
        size_t at = kGsvFirstBlock + block * kGsvBlockSize;
        std::optional<int> prn = readPrn(gsv.field(at));
        if (!prn) {
            bool padding = true;
            for (size_t i = 0; i < kGsvBlockSize; ++i)
                padding = padding && gsv.field(at + i).empty();
            missingSvid = missingSvid || !padding;
            continue;
        }
        SatelliteId id = satelliteFromTalker(gsv.talker, *prn);
        SatelliteView view;
        view.svid = static_cast<int16_t>(id.svid);
        view.constellation = id.constellation;
        view.elevationDegrees = numberOrZero(gsv.field(at + 1));
        view.azimuthDegrees = numberOrZero(gsv.field(at + 2));
        view.cn0Dbhz = numberOrZero(gsv.field(at + 3));
        addSatellite(view);
    }
    if (missingSvid) ++skipped->emptyFields;
}

void SatelliteCollector::addGsa(const NmeaSentence& gsa) {
    mHeardAny = true;
    int systemId = 0;
    if (gsa.talker == "GN") systemId = readInteger(gsa.field(kGsaSystemId)).value_or(0);
    for (size_t slot = 0; slot < kGsaPrnSlots; ++slot) {
        std::optional<int> prn = readPrn(gsa.field(kGsaFirstPrn + slot));
        if (!prn) continue;
        SatelliteId id = gsa.talker == "GN" ? satelliteFromSystemId(systemId, *prn)
                                            : satelliteFromTalker(gsa.talker, *prn);
        mUsed.insert(Key(id.constellation, id.svid));
    }
}

// A satellite heard again (another signal, or a second page set) keeps its first entry
// unless only the later one has a signal strength.
void SatelliteCollector::addSatellite(const SatelliteView& view) {
    Key key(view.constellation, view.svid);
    auto found = mIndex.find(key);
    if (found == mIndex.end()) {
        mIndex.emplace(key, mSatellites.size());
        mSatellites.push_back(view);
        return;
    }
    SatelliteView& kept = mSatellites[found->second];
    if (kept.cn0Dbhz <= 0 && view.cn0Dbhz > 0) kept = view;
}

std::vector<SatelliteView> SatelliteCollector::satellites() const {
    std::vector<SatelliteView> result = mSatellites;
    for (SatelliteView& view : result) {
        view.usedInFix = mUsed.count(Key(view.constellation, view.svid)) > 0;
    }
    return result;
}

}  // namespace replay
