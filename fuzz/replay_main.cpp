// Corpus replay for builds without libFuzzer: feeds every file of the directories
// (or the files) named on the command line to the fuzz target once, in name order.
// A missing directory is skipped; replaying no input at all is a failure.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> inputsOf(const fs::path& path) {
    std::vector<fs::path> inputs;
    if (fs::is_regular_file(path)) {
        inputs.push_back(path);
    } else if (fs::is_directory(path)) {
        for (const auto& entry : fs::directory_iterator(path)) {
            if (entry.is_regular_file()) inputs.push_back(entry.path());
        }
    }
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

std::vector<uint8_t> readAll(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(file), {});
}

}  // namespace

int main(int argc, char** argv) {
    size_t total = 0;
    for (int i = 1; i < argc; ++i) {
        const fs::path path(argv[i]);
        if (!fs::exists(path)) {
            printf("%s: absent, skipped\n", argv[i]);
            continue;
        }
        size_t replayed = 0;
        for (const fs::path& input : inputsOf(path)) {
            std::vector<uint8_t> bytes = readAll(input);
            fprintf(stderr, "replaying %s (%zu bytes)\n", input.c_str(), bytes.size());
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++replayed;
        }
        printf("%s: %zu inputs replayed\n", argv[i], replayed);
        total += replayed;
    }
    if (total == 0) {
        fprintf(stderr, "no input replayed\n");
        return 1;
    }
    return 0;
}
