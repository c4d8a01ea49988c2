// One party of the embedded world (the fusion daemon, the vendor GNSS HAL or the
// framework): the prefix of its transcript lines and the knobs a scenario turns on it.
// Knobs hold until changed, across the deaths and restarts of the party's process.
#pragma once

#include <zdhost/schedule.h>

#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "values.h"

namespace sim {

// What kind of plain result an operation answers, which decides the values `answer` takes.
enum class ResultKind { kNone, kBool, kInteger, kFloat, kObject };

// A world command parsed and checked, ready to run. Running it may still be refused by the
// world's state of the moment (false and *error: the daemon is not running, say).
using WorldAction = std::function<bool(std::string* error)>;

// Prepares a library call `FUNCTION ARGS...` (the words after `call`) as an action: what the
// framework makes from inside a call the library makes into it. The scenario reader
// supplies it, since it knows the library's functions.
using LibraryCallPreparer =
    std::function<bool(const std::vector<Token>& words, WorldAction* action, std::string* error)>;

struct Operation {
    const char* name = "";
    ResultKind kind = ResultKind::kNone;
};

class Party {
  public:
    explicit Party(std::string prefix) : mPrefix(std::move(prefix)) {}

    const std::string& prefix() const { return mPrefix; }

    // Names an interface of this party ("IFusdLbs") with its operations, so that knobs on
    // operations that do not exist are refused.
    void declare(const std::string& iface, const std::vector<Operation>& operations);
    // Names a feature the `provide` knob switches ("gnss"); provided until told otherwise.
    void declareFeature(const std::string& feature);
    // Tells that IFACE.OP hands out the object of `feature`: withholding the feature
    // empties its answer. The objects that serve such getters declare them when made.
    void declareGetter(const std::string& key, const std::string& feature);
    // The feature whose `provide FEATURE no` empties IFACE.OP's answer; "" for none.
    std::string featureOf(const std::string& key) const;

    // The knob commands every party takes: `fail IFACE.OP [once]`, `heal IFACE.OP`,
    // `answer IFACE.OP VALUE`, `provide FEATURE yes|no`. *handled tells whether args[0]
    // named one of them; the result and *error whether it was well formed, and *action
    // what turns the knob.
    bool prepareKnob(const std::vector<Token>& args, bool* handled, WorldAction* action,
                     std::string* error);

    // Whether the call of IFACE.OP being made now fails in transport (a `once` failure is
    // used up by it).
    bool takeFailure(const std::string& key);
    // The answer set for IFACE.OP, if any.
    bool answerFor(const std::string& key, Token* value) const;
    void setAnswer(const std::string& key, const std::string& value);
    bool provides(const std::string& feature) const;
    // Every declared interface with its operations, by interface name.
    std::map<std::string, std::vector<Operation>> interfaces() const;
    // Every declared feature (`provide FEATURE yes|no`).
    std::set<std::string> features() const;

    // `nested-in IFACE.OP`: `event` runs once, on the calling thread, from inside the next
    // call of IFACE.OP that goes through, as binder runs a call the party makes back while
    // the library's call into it is in flight. False and *error when IFACE.OP names no
    // operation of the party.
    bool prepareNested(const std::string& key, WorldAction event, WorldAction* action,
                       std::string* error);
    // Names an operation that only `nested-in` takes: a plain function the library calls,
    // with no knobs ("corvaneCb.geofenceAddResult").
    void declareNestable(const std::string& key);
    // The library's call of IFACE.OP went through: runs the event waiting for it, if any.
    void runNested(const std::string& key);

    // The verbs every party takes before its own: fail, heal, answer, provide.
    static const std::vector<std::string>& knobVerbs();

    // Forgets every knob (a fresh world).
    void reset();

  private:
    bool failCommand(const std::vector<Token>& args, WorldAction* action, std::string* error);
    bool healCommand(const std::vector<Token>& args, WorldAction* action, std::string* error);
    bool answerCommand(const std::vector<Token>& args, WorldAction* action, std::string* error);
    bool provideCommand(const std::vector<Token>& args, WorldAction* action, std::string* error);
    // The operation IFACE.OP names; false with *error set when there is none.
    bool find(const std::string& key, Operation* found, std::string* error) const;
    // Holds the party's lock; a run under the explorer learns that its step uses the party.
    std::unique_lock<std::mutex> use(zdhost::schedule::Access access) const;

    const std::string mPrefix;
    mutable std::mutex mLock;
    std::map<std::string, std::vector<Operation>> mInterfaces;
    std::set<std::string> mFeatures;
    std::map<std::string, std::string> mGetters;  // IFACE.OP -> feature
    std::map<std::string, bool> mFailures;        // IFACE.OP -> once
    std::map<std::string, std::string> mAnswers;
    std::set<std::string> mWithheld;  // features answered with an empty reference
    std::set<std::string> mNestable;
    std::multimap<std::string, WorldAction> mNested;  // IFACE.OP -> events, in order
};

}  // namespace sim
