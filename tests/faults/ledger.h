// What the fault sweep saw of every remote operation: whether the library called it,
// whether the case that failed it saw it fail in transport, and whether the case that
// withheld its object saw the library fetch the empty answer.
#pragma once

#include <world/world.h>

#include <map>
#include <string>
#include <vector>

namespace faults {

class Ledger {
  public:
    // Ledger of `operations`, as the world lists them once every party has registered.
    explicit Ledger(const std::vector<sim::World::RemoteOperation>& operations);

    // Takes the transcript lines of one case. `failing` is the "PARTY IFACE.OP" the case
    // failed and `withheld` the "PARTY FEATURE" it withheld; "" for none.
    void record(const std::vector<std::string>& lines, const std::string& failing,
                const std::string& withheld);

    // "PARTY IFACE.OP" of the operations the library called but that were never seen
    // failing in their own case.
    std::vector<std::string> calledNeverFailed() const;
    // Called operations with an object answer that a feature empties, whose feature's
    // case never saw them called.
    std::vector<std::string> calledNeverEmptied() const;
    // Features (as "PARTY FEATURE") that no operation's answer depends on.
    std::vector<std::string> featuresServingNothing(
        const std::vector<std::pair<std::string, std::string>>& features) const;

    size_t operations() const { return mEntries.size(); }
    size_t called() const;
    size_t failed() const;
    size_t emptied() const;
    // One row per operation: party, IFACE.OP, called?, failed?, empty answer?
    std::string table() const;

  private:
    struct Entry {
        sim::World::RemoteOperation operation;
        bool called = false;
        bool failed = false;   // a transport error in the case that failed it
        bool emptied = false;  // called in the case that withheld its feature
    };
    // The entry a transcript line records a call of, or null.
    Entry* entryOf(const std::string& line);
    std::string emptyAnswerText(const Entry& entry) const;

    std::map<std::string, Entry> mEntries;  // by "PARTY IFACE.OP"
};

}  // namespace faults
