#include "recorder.h"

#include "format.h"
#include "transcript.h"

namespace sim {

using android::sp;
using android::wp;
using android::hardware::hidl_death_recipient;
using android::hardware::Return;
using android::hidl::base::V1_0::IBase;

std::string Recorder::callText(const char* op, const std::vector<std::string>& args) const {
    std::string text = mIface + "." + op + "(";
    for (size_t i = 0; i < args.size(); ++i) text += (i == 0 ? "" : ", ") + args[i];
    return text + ")";
}

void Recorder::emit(const std::string& call, bool failed) const {
    Transcript::get().emit(mParty->prefix() + " " + call + (failed ? " -> transport-error" : ""));
}

bool Recorder::enter(const char* op, std::initializer_list<std::string> args) {
    reachCall(op);
    bool failed = mParty->takeFailure(key(op)) || processDead();
    emit(callText(op, std::vector<std::string>(args)), failed);
    if (!failed) mParty->runNested(key(op));
    reachReply();
    return !failed;
}

Return<bool> Recorder::linkToDeath(IBase* self, const sp<hidl_death_recipient>& recipient,
                                   uint64_t cookie) {
    const char* op = "linkToDeath";
    reachCall(op);
    std::string call = callText(op, {fmt(recipient), fmt(cookie)});
    if (mParty->takeFailure(key(op))) {
        emit(call, true);
        return zdhost::transportError();
    }
    emit(call, false);
    mParty->runNested(key(op));
    if (processDead() || !answer<bool>(op, true)) return false;  // no link made
    if (mProcess == nullptr) return true;
    return mProcess->linkToDeath(recipient, cookie, wp<IBase>(self));
}

Return<bool> Recorder::unlinkToDeath(const sp<hidl_death_recipient>& recipient) {
    const char* op = "unlinkToDeath";
    reachCall(op);
    std::string call = callText(op, {fmt(recipient)});
    if (mParty->takeFailure(key(op))) {
        emit(call, true);
        return zdhost::transportError();
    }
    emit(call, false);
    mParty->runNested(key(op));
    if (processDead() || !answer<bool>(op, true)) return false;  // link left in place
    if (mProcess == nullptr) return true;
    return mProcess->unlinkToDeath(recipient);
}

}  // namespace sim
