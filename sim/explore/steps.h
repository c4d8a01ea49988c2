// What a step of a run touches, and when two steps do not commute. A step is what a
// thread does from one scheduling point to its next: the operation at the point where it
// stood when it was chosen, and whatever it reached on its way to the next point.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace explore {

struct Access {
    enum class Kind : uint8_t {
        kObject,   // a mutex, an atomic, a party, the service manager ...: `id` is its address;
                   // address 0 is something unnamed, which every step depends on
        kThreads,  // the numbering of new threads: starting one takes the next number
        kStart,    // thread `id` begins: its starter's step comes before its first step
    };
    enum class Mode : uint8_t {
        kRead,
        kWrite,
        kOrder,  // only orders the steps (a mutex let go before its next holder takes it, a
                 // thread started before it runs): the two can never run the other way round
    };
    Kind kind = Kind::kObject;
    Mode mode = Mode::kWrite;
    uint64_t id = 0;

    bool operator==(const Access& other) const {
        return kind == other.kind && mode == other.mode && id == other.id;
    }
};

struct Step {
    int thread = 0;
    long decision = -1;  // the decision that chose it; -1 when no other thread could run
    std::vector<Access> accesses;
};

// Whether the order of the two matters to the run: they use one object and one of them
// changes it.
bool dependent(const Access& a, const Access& b);
bool dependent(const Step& a, const Step& b);
// Dependent, and the other order is possible too: neither access only orders the two.
bool reversible(const Access& a, const Access& b);
bool reversible(const Step& a, const Step& b);

// A step as one line of the run's protocol: "THREAD DECISION ACCESS...", each access as
// KIND MODE ID in one word ("ow7f01a2c0": a write of the object at 0x7f01a2c0).
std::string formatStep(const Step& step);
bool parseStep(std::string_view text, Step* step);
// One access word of that form, of `length` characters.
bool parseAccess(const char* word, size_t length, Access* access);

}  // namespace explore
