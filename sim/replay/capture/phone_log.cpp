// Reading a phone log row by row: header lines set the columns, Fix, Status and NMEA rows
// become events, everything else is counted by why it was left out. The events are then put
// in time order on the log's own clock.
#include "phone_log.h"

#include <algorithm>
#include <optional>

#include "phone_columns.h"
#include "phone_rows.h"

namespace replay {
namespace {

constexpr int64_t kLongestLogMs = 24LL * 3600 * 1000;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Events are checked for time order within the stream they come from: the clocks of the
// streams differ (a Status row carries the time of the last fix, an NMEA row the time it was
// reported), so only rows of one stream must not go back in time.
enum Stream { kFixStream, kStatusStream, kLogNmeaStream, kFileNmeaStream, kStreams };

bool isBlankRow(std::string_view line) {
    return line.find_first_not_of(" \t\r,") == std::string_view::npos;
}

// Calls `each` with every line of the text, without its line end.
template <typename Each>
void forEachLine(std::string_view text, Each each) {
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        text.remove_prefix(kByteOrderMark.size());
    }
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        each(line);
        start = end + 1;
    }
}

class PhoneLogReader {
  public:
    // The log, then its .nmea file: NMEA rows of the two are separate streams.
    void read(std::string_view text, Stream nmeaStream) {
        forEachLine(text, [&](std::string_view line) { readLine(line, nmeaStream); });
        endReport();
    }

    PhoneLog finish();

  private:
    struct ReadEvent {
        PhoneEvent event;
        bool timed = true;
        int rows = 1;
    };
    struct Report {
        std::optional<int64_t> timeMs;
        int count = 0;
        int lastIndex = -1;
        std::vector<SatelliteView> signals;
    };

    void readLine(std::string_view line, Stream nmeaStream);
    void headerLine(std::string_view line);
    void fixRow(const std::vector<std::string_view>& fields);
    void statusRow(const std::vector<std::string_view>& fields);
    void nmeaRow(std::string_view line, Stream stream);
    void endReport();
    void add(PhoneEvent event, Stream stream, bool timed, int rows);
    void skip(const char* reason, int rows = 1) { mCounts.skipped[reason] += rows; }
    const Columns* declared(std::string_view type) const;
    void assignUntimedReports();

    std::vector<std::pair<std::string, Columns>> mDeclared;  // row type -> columns
    std::string mVersion;
    PhoneLogCounts mCounts;
    std::optional<Report> mReport;
    std::vector<ReadEvent> mRead;
    int64_t mLastTime[kStreams] = {};
};

void PhoneLogReader::readLine(std::string_view line, Stream nmeaStream) {
    if (!line.empty() && line[0] == '#') {
        headerLine(line);
        return;
    }
    ++mCounts.rows;
    if (isBlankRow(line)) return skip(phone_skip::kBlank);
    const std::vector<std::string_view> fields = splitRow(line);
    const std::string_view type = fields[0];
    if (type == "Fix") return fixRow(fields);
    if (type == "Status") return statusRow(fields);
    if (type == "NMEA") return nmeaRow(line, nmeaStream);
    skip(declared(type) != nullptr ? phone_skip::kOtherType : phone_skip::kUnknownType);
}

void PhoneLogReader::headerLine(std::string_view line) {
    if (mVersion.empty() && isVersionLine(line)) mVersion = std::string(line);
    std::optional<std::pair<std::string, Columns>> columns = readColumnLine(line);
    if (!columns) return;
    for (auto& entry : mDeclared) {
        if (entry.first == columns->first) {
            entry.second = std::move(columns->second);
            return;
        }
    }
    mDeclared.push_back(std::move(*columns));
}

const Columns* PhoneLogReader::declared(std::string_view type) const {
    for (const auto& entry : mDeclared) {
        if (entry.first == type) return &entry.second;
    }
    return nullptr;
}

void PhoneLogReader::fixRow(const std::vector<std::string_view>& fields) {
    const Columns* columns = declared("Fix");
    const FixRow row = readFixRow(fields, columns ? *columns : documentedFixColumns(mVersion));
    ++mCounts.fixesByProvider[row.provider];
    if (row.provider != "GPS") return;
    if (!row.location.value) return skip(row.location.skipReason);
    mCounts.fieldsLeftOut += row.fieldsLeftOut;
    PhoneEvent event;
    event.kind = PhoneEvent::Kind::kLocation;
    event.atMs = row.location.value->v1_0.timestamp;
    event.location = *row.location.value;
    add(std::move(event), kFixStream, true, 1);
}

// A report is a run of rows with SignalIndex rising under one SignalCount and time. It ends
// with its last index; a row that does not continue the run begins the next report.
void PhoneLogReader::statusRow(const std::vector<std::string_view>& fields) {
    const Columns* columns = declared("Status");
    const RowResult<SignalRow> row =
        readStatusRow(fields, columns ? *columns : documentedStatusColumns());
    if (!row.value) return skip(row.skipReason);
    const SignalRow& signal = *row.value;
    const bool continues = mReport && mReport->timeMs == signal.timeMs &&
                           mReport->count == signal.count && signal.index > mReport->lastIndex;
    if (!continues) {
        endReport();
        mReport = Report{signal.timeMs, signal.count, -1, {}};
    }
    mReport->lastIndex = signal.index;
    mReport->signals.push_back(signal.signal);
    if (signal.index == signal.count - 1) endReport();
}

void PhoneLogReader::endReport() {
    if (!mReport) return;
    PhoneEvent event;
    event.kind = PhoneEvent::Kind::kSatellites;
    event.atMs = mReport->timeMs.value_or(0);
    event.complete = static_cast<int>(mReport->signals.size()) == mReport->count;
    const int rows = static_cast<int>(mReport->signals.size());
    event.signals = std::move(mReport->signals);
    const bool timed = mReport->timeMs.has_value();
    mReport.reset();
    add(std::move(event), kStatusStream, timed, rows);
}

void PhoneLogReader::nmeaRow(std::string_view line, Stream stream) {
    RowResult<NmeaRow> row = readNmeaRow(line);
    if (!row.value) return skip(row.skipReason);
    PhoneEvent event;
    event.kind = PhoneEvent::Kind::kNmea;
    event.atMs = row.value->timeMs;
    event.sentence = std::move(row.value->sentence);
    add(std::move(event), stream, true, 1);
}

void PhoneLogReader::add(PhoneEvent event, Stream stream, bool timed, int rows) {
    // A time that leaps a day ahead is a broken one; taken in, it would put every later row
    // of the stream out of order.
    if (timed) {
        if (event.atMs < mLastTime[stream]) return skip(phone_skip::kOutOfOrder, rows);
        if (mLastTime[stream] > 0 && event.atMs - mLastTime[stream] > kLongestLogMs) {
            return skip(phone_skip::kTooLate, rows);
        }
        mLastTime[stream] = event.atMs;
    }
    mRead.push_back(ReadEvent{std::move(event), timed, rows});
}

// A Status report before the first fix has no time of its own: it takes the time of the
// event read before it, or the log's first time when nothing came before it.
void PhoneLogReader::assignUntimedReports() {
    std::optional<int64_t> first;
    for (const ReadEvent& read : mRead) {
        if (read.timed) first = std::min(first.value_or(read.event.atMs), read.event.atMs);
    }
    std::optional<int64_t> previous;
    for (ReadEvent& read : mRead) {
        if (!read.timed) read.event.atMs = previous.value_or(first.value_or(0));
        previous = read.event.atMs;
    }
}

PhoneLog PhoneLogReader::finish() {
    assignUntimedReports();
    std::stable_sort(mRead.begin(), mRead.end(), [](const ReadEvent& a, const ReadEvent& b) {
        return a.event.atMs < b.event.atMs;
    });
    PhoneLog log;
    log.version = mVersion;
    const int64_t startMs = mRead.empty() ? 0 : mRead.front().event.atMs;
    for (ReadEvent& read : mRead) {
        if (read.event.atMs - startMs > kLongestLogMs) {
            skip(phone_skip::kTooLate, read.rows);
            continue;
        }
        if (!read.event.complete) ++mCounts.incompleteReports;
        log.events.push_back(std::move(read.event));
    }
    log.counts = std::move(mCounts);
    return log;
}

}  // namespace

// The header must name a version or the header description, and the first row must not be an
// NMEA sentence, so that a receiver capture with a commented header is still read as one.
bool looksLikePhoneLog(const std::string& text) {
    std::string_view rest(text);
    if (rest.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        rest.remove_prefix(kByteOrderMark.size());
    }
    bool namedInHeader = false;
    while (!rest.empty()) {
        const size_t end = std::min(rest.find('\n'), rest.size());
        const std::string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (isBlankRow(line)) continue;
        if (line[0] != '#') {
            if (line.substr(0, 5) == "NMEA,") return true;
            return namedInHeader && line[0] != '$' && line[0] != '!';
        }
        namedInHeader = namedInHeader || isVersionLine(line) ||
                        line.find("Header Description") != std::string_view::npos;
    }
    return namedInHeader;
}

PhoneLog parsePhoneLog(const std::string& text, const std::string& nmeaText) {
    PhoneLogReader reader;
    reader.read(text, kLogNmeaStream);
    reader.read(nmeaText, kFileNmeaStream);
    return reader.finish();
}

}  // namespace replay
