// Cutting a capture into the receiver's epochs from the sentences' own UTC times (see
// splitCapture in capture.h for the rules).
#include <map>
#include <set>
#include <string_view>

#include "capture.h"
#include "epoch_times.h"
#include "nmea_fields.h"
#include "nmea_sentence.h"
#include "time_field.h"

namespace replay {
namespace {

// What a sentence says about where epochs begin and end.
enum class TimeRole {
    kOther,        // carries no time, or cannot be trusted to: never marks an epoch
    kTimed,        // a time-carrying sentence with a readable time
    kTimeMissing,  // a time-carrying sentence whose time is empty or unreadable
};

struct Sentence {
    std::string text;
    std::string address;  // talker and type; "" for a sentence whose checksum does not match
    TimeRole role = TimeRole::kOther;
    std::string timeKey;  // kTimed: see timeKey()
};

Sentence classify(std::string line) {
    Sentence sentence;
    const NmeaSentence parsed = parseSentence(line);
    const bool trusted =
        parsed.check == SentenceCheck::Ok || parsed.check == SentenceCheck::NoChecksum;
    if (trusted) {
        sentence.address = std::string(parsed.talker).append(parsed.type);
        if (isTimeBearing(parsed)) {
            sentence.timeKey = timeKey(utcTimeField(parsed));
            sentence.role = sentence.timeKey.empty() ? TimeRole::kTimeMissing : TimeRole::kTimed;
        }
    }
    sentence.text = std::move(line);
    return sentence;
}

// Consecutive timed sentences with one time: [first, last] in the sentence list.
struct TimedRun {
    size_t first = 0;
    size_t last = 0;
    std::string key;
};

std::vector<TimedRun> timedRuns(const std::vector<Sentence>& sentences) {
    std::vector<TimedRun> runs;
    for (size_t i = 0; i < sentences.size(); ++i) {
        const Sentence& sentence = sentences[i];
        if (sentence.role != TimeRole::kTimed) continue;
        if (!runs.empty() && runs.back().key == sentence.timeKey) {
            runs.back().last = i;
        } else {
            runs.push_back(TimedRun{i, i, sentence.timeKey});
        }
    }
    return runs;
}

bool hasMissingTime(const std::vector<Sentence>& sentences, size_t begin, size_t end) {
    for (size_t i = begin; i < end; ++i) {
        if (sentences[i].role == TimeRole::kTimeMissing) return true;
    }
    return false;
}

// The sentence that most often comes last before the time changes (the first such, on a
// tie). Stretches with missing times say nothing about it.
std::string learnCycleEnder(const std::vector<Sentence>& sentences,
                            const std::vector<TimedRun>& runs) {
    std::map<std::string, int> votes;
    std::vector<std::string> order;
    for (size_t r = 0; r + 1 < runs.size(); ++r) {
        const size_t end = runs[r + 1].first;
        if (hasMissingTime(sentences, runs[r].last, end)) continue;
        for (size_t i = end; i-- > runs[r].last;) {
            if (sentences[i].address.empty()) continue;
            if (votes[sentences[i].address]++ == 0) order.push_back(sentences[i].address);
            break;
        }
    }
    std::string ender;
    int best = 0;
    for (const std::string& address : order) {
        if (votes[address] > best) best = votes[address], ender = address;
    }
    return ender;
}

class EpochBuilder {
  public:
    explicit EpochBuilder(const std::vector<Sentence>& sentences) : mSentences(sentences) {}

    // Sentences [from, to) join the current epoch, or begin the first one.
    void add(size_t from, size_t to) {
        for (size_t i = from; i < to; ++i) {
            if (mEpochs.empty()) begin(EpochRule::kUtcTime);
            mEpochs.back().lines.push_back(mSentences[i].text);
            if (mSentences[i].role != TimeRole::kOther) mSeen.insert(mSentences[i].address);
        }
    }

    void begin(EpochRule rule) {
        mEpochs.emplace_back();
        mEpochs.back().rule = rule;
        mSeen.clear();
    }

    // Sentences [from, to) where times are missing: a time-carrying sentence whose talker and
    // type the current epoch already holds begins a new epoch.
    void addCutByRepeats(size_t from, size_t to) {
        for (size_t i = from; i < to; ++i) {
            const Sentence& sentence = mSentences[i];
            if (mEpochs.empty() ||
                (sentence.role == TimeRole::kTimeMissing && mSeen.count(sentence.address) > 0)) {
                begin(EpochRule::kRepeatedSentence);
            }
            add(i, i + 1);
        }
    }

    void stampTime(const std::string& key) {
        if (!mEpochs.empty() && mEpochs.back().rule == EpochRule::kUtcTime) {
            mEpochs.back().timeOfDayMs = readTimeOfDayMs(key);
        }
    }

    std::vector<Epoch> take() { return std::move(mEpochs); }

  private:
    const std::vector<Sentence>& mSentences;
    std::vector<Epoch> mEpochs;
    std::set<std::string> mSeen;  // time-carrying talkers and types of the current epoch
};

// Where the sentences between two timed runs divide: after the last cycle ender among them
// (the earlier run's last sentence included), else at the later run.
size_t cutBetween(const std::vector<Sentence>& sentences, const TimedRun& earlier,
                  const TimedRun& later, const std::string& ender) {
    for (size_t i = later.first; i-- > earlier.last;) {
        if (!ender.empty() && sentences[i].address == ender) return i + 1;
    }
    return later.first;
}

std::vector<Epoch> cutEpochs(const std::vector<Sentence>& sentences, const std::string& ender) {
    const std::vector<TimedRun> runs = timedRuns(sentences);
    EpochBuilder epochs(sentences);
    if (runs.empty()) {
        epochs.addCutByRepeats(0, sentences.size());
        return epochs.take();
    }
    // Before the first run: joins it, unless times are missing there.
    const bool untimedStart = hasMissingTime(sentences, 0, runs.front().first);
    epochs.addCutByRepeats(0, untimedStart ? runs.front().first : 0);
    size_t next = untimedStart ? runs.front().first : 0;
    for (size_t r = 0; r < runs.size(); ++r) {
        epochs.begin(EpochRule::kUtcTime);
        epochs.add(next, runs[r].last + 1);
        epochs.stampTime(runs[r].key);
        const size_t end = r + 1 < runs.size() ? runs[r + 1].first : sentences.size();
        if (hasMissingTime(sentences, runs[r].last + 1, end)) {
            epochs.addCutByRepeats(runs[r].last + 1, end);
            next = end;
        } else if (r + 1 < runs.size()) {
            next = cutBetween(sentences, runs[r], runs[r + 1], ender);
            epochs.add(runs[r].last + 1, next);
        } else {
            epochs.add(runs[r].last + 1, end);
        }
    }
    return epochs.take();
}

bool isBlank(std::string_view line) {
    return line.find_first_not_of(" \t\r\n\v\f") == std::string_view::npos;
}

}  // namespace

Capture splitCapture(const std::string& text) {
    Capture capture;
    std::vector<Sentence> sentences;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        std::string_view line(text.data() + start, end - start);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        start = end + 1;
        if (isBlank(line)) continue;
        if (line[0] != '$' && line[0] != '!') {
            ++capture.linesNotNmea;
            continue;
        }
        sentences.push_back(classify(std::string(line)));
    }
    capture.sentenceCount = static_cast<int>(sentences.size());
    capture.cycleEnder = learnCycleEnder(sentences, timedRuns(sentences));
    capture.epochs = cutEpochs(sentences, capture.cycleEnder);
    placeEpochs(&capture);
    return capture;
}

}  // namespace replay
