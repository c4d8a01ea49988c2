// The scenario's environment: system properties and the batching-channel device-tree file.
#include "environment.h"

#include <unistd.h>
#include <zdhost/platform_control.h>

#include <cstdio>
#include <cstdlib>

namespace sim {

namespace {

// The host file that stands for the device-tree file; removed at exit.
class DevtreeFile {
  public:
    ~DevtreeFile() {
        if (!mPath.empty()) unlink(mPath.c_str());
    }

    // Writes exactly `bytes` and returns the path, or "" when the file cannot be written.
    std::string write(const std::string& bytes) {
        if (mPath.empty() && !create()) return "";
        FILE* file = fopen(mPath.c_str(), "wb");
        if (!file) return "";
        const bool ok = fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
        return fclose(file) == 0 && ok ? mPath : "";
    }

  private:
    bool create() {
        const char* dir = getenv("TMPDIR");
        std::string path = std::string(dir && *dir ? dir : "/tmp") + "/zdgnss-sim-devtree-XXXXXX";
        const int fd = mkstemp(path.data());
        if (fd < 0) return false;
        close(fd);
        mPath = path;
        return true;
    }

    std::string mPath;
};

DevtreeFile& devtreeFile() {
    static DevtreeFile file;
    return file;
}

bool want(const std::vector<Token>& args, size_t count, const char* usage, std::string* error) {
    if (args.size() == count) return true;
    *error = std::string("usage: ") + usage;
    return false;
}

bool prepareDevtree(const std::vector<Token>& args, std::function<void()>* apply,
                    std::string* error) {
    if (!want(args, 1, "devtree absent | devtree \"BYTES\"", error)) return false;
    if (!args[0].quoted && args[0].text == "absent") {
        *apply = [] { zdhost::platform::setBatchingChannelFile(""); };
        return true;
    }
    if (!args[0].quoted) {
        *error = "devtree takes absent or a quoted string, not \"" + args[0].text + "\"";
        return false;
    }
    const std::string bytes = args[0].text;
    *apply = [bytes] {
        const std::string path = devtreeFile().write(bytes);
        if (path.empty()) perror("zdgnss-sim: cannot write the device-tree file");
        zdhost::platform::setBatchingChannelFile(path);
    };
    return true;
}

}  // namespace

bool isEnvironmentCommand(const std::string& head) {
    return head == "prop" || head == "unprop" || head == "devtree";
}

bool prepareEnvironment(const std::string& head, const std::vector<Token>& args,
                        std::function<void()>* apply, std::string* error) {
    if (head == "devtree") return prepareDevtree(args, apply, error);
    const bool set = head == "prop";
    if (!want(args, set ? 2 : 1, set ? "prop NAME VALUE" : "unprop NAME", error)) return false;
    const std::string name = args[0].text;
    const std::string value = set ? args[1].text : std::string();
    *apply = [name, value] { zdhost::platform::setProperty(name, value); };
    return true;
}

void resetEnvironment() {
    zdhost::platform::setBatchingChannelFile("");
}

}  // namespace sim
