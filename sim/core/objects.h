// Names of objects as the transcript shows them: "@IFusdLbs#2", "@gnssCb", "null".
#pragma once

#include <utils/RefBase.h>

#include <mutex>
#include <string>
#include <unordered_map>

namespace sim {

class ObjectNames {
  public:
    static ObjectNames& get();

    // Gives a fake's or a framework object's name. With numbered true the name
    // gets the next "#N" of that base name ("IFusdLbs" -> "@IFusdLbs#3"); with
    // false it is used as is ("gnssCb" -> "@gnssCb").
    void assign(const android::RefBase* object, const std::string& baseName, bool numbered = true);
    // The object's name; an object not seen before is named by its dynamic class
    // (namespaces dropped) and numbered in order of first sight. Null prints "null".
    std::string nameOf(const android::RefBase* object);

    template <typename T>
    std::string nameOf(const android::sp<T>& object) {
        return nameOf(static_cast<const android::RefBase*>(object.get()));
    }

  private:
    struct Entry {
        android::wp<android::RefBase> alive;
        std::string name;
    };
    std::string nextName(const std::string& baseName);

    std::mutex mLock;
    std::unordered_map<const android::RefBase*, Entry> mNames;
    std::unordered_map<std::string, int> mCounts;
};

}  // namespace sim
