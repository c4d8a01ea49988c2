#include "party.h"

#include <zdhost/runtime.h>

#include "transcript.h"

namespace sim {

using zdhost::schedule::Access;

std::unique_lock<std::mutex> Party::use(Access access) const {
    zdhost::schedule::touch(this, access);
    return std::unique_lock<std::mutex>(mLock);
}

const std::vector<std::string>& Party::knobVerbs() {
    static const std::vector<std::string> kVerbs = {"fail", "heal", "answer", "provide"};
    return kVerbs;
}

void Party::declare(const std::string& iface, const std::vector<Operation>& operations) {
    const auto lock = use(Access::kWrite);
    mInterfaces[iface] = operations;
}

void Party::declareFeature(const std::string& feature) {
    const auto lock = use(Access::kWrite);
    mFeatures.insert(feature);
}

void Party::declareGetter(const std::string& key, const std::string& feature) {
    const auto lock = use(Access::kWrite);
    mGetters[key] = feature;
}

std::string Party::featureOf(const std::string& key) const {
    const auto lock = use(Access::kRead);
    auto it = mGetters.find(key);
    return it == mGetters.end() ? std::string() : it->second;
}

bool Party::prepareKnob(const std::vector<Token>& args, bool* handled, WorldAction* action,
                        std::string* error) {
    *handled = true;
    const std::string& verb = args.empty() ? std::string() : args[0].text;
    if (verb == "fail") return failCommand(args, action, error);
    if (verb == "heal") return healCommand(args, action, error);
    if (verb == "answer") return answerCommand(args, action, error);
    if (verb == "provide") return provideCommand(args, action, error);
    *handled = false;
    return false;
}

bool Party::failCommand(const std::vector<Token>& args, WorldAction* action, std::string* error) {
    bool once = args.size() == 3 && args[2].text == "once";
    if (args.size() != 2 && !once) {
        *error = "usage: " + mPrefix + " fail IFACE.OP [once]";
        return false;
    }
    Operation op;
    if (!find(args[1].text, &op, error)) return false;
    *action = [this, key = args[1].text, once](std::string*) {
        const auto lock = use(Access::kWrite);
        mFailures[key] = once;
        return true;
    };
    return true;
}

bool Party::healCommand(const std::vector<Token>& args, WorldAction* action, std::string* error) {
    if (args.size() != 2) {
        *error = "usage: " + mPrefix + " heal IFACE.OP";
        return false;
    }
    Operation op;
    if (!find(args[1].text, &op, error)) return false;
    *action = [this, key = args[1].text](std::string*) {
        const auto lock = use(Access::kWrite);
        mFailures.erase(key);
        return true;
    };
    return true;
}

bool Party::answerCommand(const std::vector<Token>& args, WorldAction* action, std::string* error) {
    if (args.size() != 3) {
        *error = "usage: " + mPrefix + " answer IFACE.OP VALUE";
        return false;
    }
    Operation op;
    if (!find(args[1].text, &op, error)) return false;
    bool b;
    int64_t i;
    double d;
    switch (op.kind) {
        case ResultKind::kBool:
            if (!parseBool(args[2], &b, error)) return false;
            break;
        case ResultKind::kInteger:
            if (!parseInt64(args[2], &i, error)) return false;
            break;
        case ResultKind::kFloat:
            if (!parseDouble(args[2], &d, error)) return false;
            break;
        default:
            *error = args[1].text + " has no plain result to answer";
            return false;
    }
    *action = [this, key = args[1].text, value = args[2].text](std::string*) {
        setAnswer(key, value);
        return true;
    };
    return true;
}

bool Party::provideCommand(const std::vector<Token>& args, WorldAction* action,
                           std::string* error) {
    if (args.size() != 3 || (args[2].text != "yes" && args[2].text != "no")) {
        *error = "usage: " + mPrefix + " provide FEATURE yes|no";
        return false;
    }
    if (features().count(args[1].text) == 0) {
        *error = mPrefix + " provides no '" + args[1].text + "'";
        return false;
    }
    *action = [this, feature = args[1].text, provide = args[2].text == "yes"](std::string*) {
        const auto lock = use(Access::kWrite);
        if (provide) {
            mWithheld.erase(feature);
        } else {
            mWithheld.insert(feature);
        }
        return true;
    };
    return true;
}

void Party::declareNestable(const std::string& key) {
    std::lock_guard<std::mutex> lock(mLock);
    mNestable.insert(key);
}

bool Party::prepareNested(const std::string& key, WorldAction event, WorldAction* action,
                          std::string* error) {
    Operation op;
    bool nestable = false;
    {
        std::lock_guard<std::mutex> lock(mLock);
        nestable = mNestable.count(key) != 0;
    }
    if (!nestable && !find(key, &op, error)) return false;
    *action = [this, key, event](std::string*) {
        std::lock_guard<std::mutex> lock(mLock);
        mNested.emplace(key, event);
        return true;
    };
    return true;
}

void Party::runNested(const std::string& key) {
    WorldAction event;
    {
        std::lock_guard<std::mutex> lock(mLock);
        auto it = mNested.find(key);
        if (it == mNested.end()) return;
        event = std::move(it->second);
        mNested.erase(it);
    }
    // On the calling thread: a delivery the event makes runs here, not on the pool.
    zdhost::pool::runAsPoolThread([&] {
        std::string error;
        if (!event(&error)) Transcript::get().emit("refused nested in " + key + ": " + error);
    });
}

bool Party::find(const std::string& key, Operation* found, std::string* error) const {
    size_t dot = key.rfind('.');
    std::string iface = dot == std::string::npos ? key : key.substr(0, dot);
    std::string name = dot == std::string::npos ? std::string() : key.substr(dot + 1);
    const auto lock = use(Access::kRead);
    auto it = mInterfaces.find(iface);
    if (it == mInterfaces.end()) {
        *error = mPrefix + " has no interface '" + iface + "'";
        return false;
    }
    for (const Operation& op : it->second) {
        if (name == op.name) {
            *found = op;
            return true;
        }
    }
    *error = iface + " has no operation '" + name + "'";
    return false;
}

bool Party::takeFailure(const std::string& key) {
    const auto lock = use(Access::kRead);
    auto it = mFailures.find(key);
    if (it == mFailures.end()) return false;
    if (it->second) {  // a `once` failure is used up by this call
        zdhost::schedule::touch(this, Access::kWrite);
        mFailures.erase(it);
    }
    return true;
}

bool Party::answerFor(const std::string& key, Token* value) const {
    const auto lock = use(Access::kRead);
    auto it = mAnswers.find(key);
    if (it == mAnswers.end()) return false;
    value->text = it->second;
    return true;
}

void Party::setAnswer(const std::string& key, const std::string& value) {
    const auto lock = use(Access::kWrite);
    mAnswers[key] = value;
}

std::map<std::string, std::vector<Operation>> Party::interfaces() const {
    const auto lock = use(Access::kRead);
    return mInterfaces;
}

std::set<std::string> Party::features() const {
    const auto lock = use(Access::kRead);
    return mFeatures;
}

bool Party::provides(const std::string& feature) const {
    const auto lock = use(Access::kRead);
    return mWithheld.count(feature) == 0;
}

void Party::reset() {
    const auto lock = use(Access::kWrite);
    mFailures.clear();
    mAnswers.clear();
    mWithheld.clear();
    mNested.clear();
}

}  // namespace sim
