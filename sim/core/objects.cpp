// Names of objects as the transcript shows them.
#include "objects.h"

#include <cxxabi.h>
#include <zdhost/schedule.h>

#include <cstdlib>
#include <memory>
#include <typeinfo>

namespace sim {

namespace {

// The dynamic class name without namespaces: "(anonymous namespace)::FusdGnssCallback"
// becomes "FusdGnssCallback". Template arguments are kept.
std::string className(const android::RefBase* object) {
    const char* mangled = typeid(*object).name();
    int status = 0;
    std::unique_ptr<char, decltype(&free)> demangled(
        abi::__cxa_demangle(mangled, nullptr, nullptr, &status), &free);
    std::string name = status == 0 ? demangled.get() : mangled;
    const size_t args = name.find('<');
    const size_t scope = name.rfind("::", args);
    return scope == std::string::npos ? name : name.substr(scope + 2);
}

}  // namespace

ObjectNames& ObjectNames::get() {
    // Never destroyed: objects released during static destruction may still be named.
    static ObjectNames* names = new ObjectNames;
    return *names;
}

void ObjectNames::assign(const android::RefBase* object, const std::string& baseName,
                         bool numbered) {
    if (!object) return;
    std::lock_guard<std::mutex> lock(mLock);
    auto* mutableObject = const_cast<android::RefBase*>(object);
    Entry& entry = mNames[object];
    zdhost::schedule::touch(&entry, zdhost::schedule::Access::kWrite);
    entry = Entry{mutableObject, numbered ? nextName(baseName) : "@" + baseName};
}

std::string ObjectNames::nameOf(const android::RefBase* object) {
    if (!object) return "null";
    std::lock_guard<std::mutex> lock(mLock);
    auto found = mNames.find(object);
    // The weak reference tells a named object from a later one at the same address:
    // it keeps the old object's reference block, which a new object never shares.
    if (found != mNames.end() && found->second.alive.get_refs() == object->getWeakRefs()) {
        zdhost::schedule::touch(&found->second, zdhost::schedule::Access::kRead);
        return found->second.name;
    }
    auto* mutableObject = const_cast<android::RefBase*>(object);
    Entry& entry = mNames[object];
    zdhost::schedule::touch(&entry, zdhost::schedule::Access::kWrite);
    entry = Entry{mutableObject, nextName(className(object))};
    return entry.name;
}

// Under the explorer, a step that names an object uses its entry and its base name's
// count (a new name depends on the names given before it); one that prints a known name
// reads the entry.
std::string ObjectNames::nextName(const std::string& baseName) {
    int& count = mCounts[baseName];
    zdhost::schedule::touch(&count, zdhost::schedule::Access::kWrite);
    return "@" + baseName + "#" + std::to_string(++count);
}

}  // namespace sim
