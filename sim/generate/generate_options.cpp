#include "generate_options.h"

#include <cstdlib>
#include <map>

namespace gen {

namespace {

bool number(const std::string& text, unsigned long long* value) {
    if (text.empty() || text[0] == '-') return false;
    char* end = nullptr;
    *value = strtoull(text.c_str(), &end, 10);
    return *end == '\0';
}

}  // namespace

GenerateOptions defaultGenerateOptions() {
    GenerateOptions options;
    const std::string explore = ZD_EXPLORE_SCENARIOS_DIR;
    options.table = explore + "/generated/operations.table";
    options.hazards = explore + "/generated/kept-hazards.table";
    options.handDir = explore;
    options.selection.day = today();
    return options;
}

bool parseGenerateOptions(const std::vector<std::string>& args, GenerateOptions* o) {
    const std::map<std::string, std::string*> texts = {
        {"--table", &o->table},
        {"--hazards", &o->hazards},
        {"--hand", &o->handDir},
        {"--out", &o->out},
        {"--report", &o->report},
        {"--only", &o->selection.only},
        {"--write", &o->writeDir},
        {"--id", &o->selection.id},
        {"--footprint-cache", &o->footprintCache},
        {"--baseline", &o->baseline},
    };
    const std::map<std::string, bool*> flags = {
        {"--generate", nullptr},    {"--triples", &o->triples},
        {"--check", &o->check},     {"--stop-at-first", &o->stopAtFirst},
        {"--list", &o->list},       {"--print-footprints", &o->printFootprints},
        {"--summary", &o->summary}, {"--changed-first", &o->changedFirst},
    };
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (auto flag = flags.find(arg); flag != flags.end()) {
            if (flag->second != nullptr) *flag->second = true;
            continue;
        }
        if (arg == "--no-hand") {
            o->handDir.clear();
            continue;
        }
        if (i + 1 >= args.size()) return false;
        const std::string& value = args[++i];
        if (auto text = texts.find(arg); text != texts.end()) {
            *text->second = value;
            continue;
        }
        if (arg == "--block-budget") {
            char* end = nullptr;
            o->blockBudget = strtod(value.c_str(), &end);
            if (end == value.c_str() || *end != '\0' || o->blockBudget < 0) return false;
            continue;
        }
        unsigned long long n = 0;
        if (!number(value, &n)) return false;
        if (arg == "--bound") {
            o->bound = static_cast<int>(n);
        } else if (arg == "--max-runs") {
            o->maxRuns = n;
        } else if (arg == "--minimise-runs") {
            o->minimiseRuns = n;
        } else if (arg == "--rotation" && n >= 1) {
            o->selection.rotation = static_cast<unsigned>(n);
        } else if (arg == "--shared-rotation" && n >= 1) {
            o->selection.sharedRotation = static_cast<unsigned>(n);
        } else if (arg == "--day") {
            o->selection.day = static_cast<long>(n);
        } else if (arg == "--real" && n >= 1) {
            o->realRuns = static_cast<unsigned>(n);
        } else {
            return false;
        }
    }
    return true;
}

}  // namespace gen
