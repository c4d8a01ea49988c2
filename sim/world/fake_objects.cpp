#include "fake_objects.h"

namespace sim {

using android::sp;
using android::hidl::base::V1_0::IBase;

Extensions::Extensions(Party& party, const std::string& owner, std::vector<Getter> getters)
    : mParty(party), mGetters(std::move(getters)) {
    for (const Getter& getter : mGetters)
        party.declareGetter(owner + "." + getter.op, getter.feature);
}

sp<IBase> Extensions::fetch(const std::string& op) {
    for (const Getter& getter : mGetters) {
        if (getter.op != op) continue;
        if (!mParty.provides(getter.feature)) return nullptr;
        zdhost::schedule::touch(this, zdhost::schedule::Access::kWrite);
        std::lock_guard<std::mutex> lock(mLock);
        sp<IBase>& object = mMade[getter.feature];
        if (object == nullptr) object = getter.make();
        return object;
    }
    return nullptr;
}

sp<IBase> Extensions::made(const std::string& feature) const {
    zdhost::schedule::touch(this, zdhost::schedule::Access::kRead);
    std::lock_guard<std::mutex> lock(mLock);
    auto it = mMade.find(feature);
    return it == mMade.end() ? nullptr : it->second;
}

}  // namespace sim
