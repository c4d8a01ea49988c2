// Reading a scenario file with its includes.
#include "scenario_file.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace sim {

namespace {

// The path an include names, taken relative to the including file's directory.
std::string resolve(const std::string& includer, const std::string& named) {
    const std::filesystem::path path(named);
    if (path.is_absolute()) return named;
    return (std::filesystem::path(includer).parent_path() / path).lexically_normal().string();
}

// The files being read, the outermost first: an include of one of them is a cycle.
class Expander {
  public:
    Expander(std::vector<Line>* lines, SourceError* error) : lines_(lines), error_(error) {}

    bool expand(const std::string& file, const std::string& text) {
        std::vector<Line> own;
        if (!lexScenario(text, &own, &error_->line, &error_->reason)) {
            error_->file = file;
            return false;
        }
        open_.push_back(file);
        for (Line& line : own) {
            line.file = file;
            if (!isInclude(line)) {
                lines_->push_back(std::move(line));
            } else if (!include(line)) {
                return false;
            }
        }
        open_.pop_back();
        return true;
    }

  private:
    static bool isInclude(const Line& line) {
        return !line.tokens[0].quoted && line.tokens[0].text == "include";
    }

    bool fail(const Line& at, const std::string& reason) {
        *error_ = SourceError{at.file, at.number, reason};
        return false;
    }

    static std::filesystem::path identity(const std::string& file) {
        std::error_code ignored;
        return std::filesystem::weakly_canonical(file, ignored);
    }

    bool isOpen(const std::string& file) const {
        for (const auto& open : open_) {
            if (identity(open) == identity(file)) return true;
        }
        return false;
    }

    std::string chainTo(const std::string& file) const {
        std::string chain;
        for (const auto& open : open_) chain += open + " -> ";
        return chain + file;
    }

    bool include(const Line& line) {
        if (line.tokens.size() != 2) return fail(line, "usage: include \"FILE\"");
        const std::string file = resolve(line.file, line.tokens[1].text);
        if (isOpen(file)) return fail(line, "include cycle: " + chainTo(file));
        std::string text;
        if (!readFile(file, &text)) return fail(line, "cannot read included file " + file);
        return expand(file, text);
    }

    std::vector<Line>* lines_;
    SourceError* error_;
    std::vector<std::string> open_;
};

}  // namespace

bool readFile(const std::string& path, std::string* text) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) return false;
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream content;
    content << in.rdbuf();
    *text = content.str();
    return true;
}

bool loadScenario(const std::string& file, const std::string& text, std::vector<Line>* lines,
                  SourceError* error) {
    lines->clear();
    return Expander(lines, error).expand(file, text);
}

}  // namespace sim
