#include "kept_hazards.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>

#include "scenario_file.h"

namespace gen {

bool parseKeptHazards(const std::string& text, const std::string& file,
                      std::vector<KeptHazard>* hazards, std::string* error) {
    hazards->clear();
    std::istringstream in(text);
    std::string line;
    std::string reason;
    int number = 0;
    auto fail = [&](const std::string& why) {
        *error = file + ":" + std::to_string(number) + ": " + why;
        return false;
    };
    while (std::getline(in, line)) {
        ++number;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.rfind("#", 0) == 0) {
            reason += (reason.empty() ? "" : " ") + line.substr(line.size() > 1 ? 2 : 1);
            continue;
        }
        std::istringstream words(line);
        std::string keyword, block, kind, count, extra;
        words >> keyword >> block >> kind >> count >> extra;
        if (keyword.empty()) {
            reason.clear();
            continue;
        }
        KeptHazard hazard;
        hazard.line = number;
        if (keyword != "keep" || block.empty() || !extra.empty() ||
            !sim::parseFindingKind(kind, &hazard.expected.kind)) {
            return fail("usage: keep STATE:A+B KIND [COUNT]");
        }
        if (!count.empty()) {
            char* end = nullptr;
            const long n = strtol(count.c_str(), &end, 10);
            if (*end != '\0' || n < 1) return fail("a count is a number from 1");
            hazard.expected.count = static_cast<int>(n);
        }
        if (reason.empty()) return fail("a kept hazard needs its reason in a comment above it");
        for (const KeptHazard& known : *hazards) {
            if (known.block == block && known.expected.kind == hazard.expected.kind) {
                return fail(block + " " + kind + " is declared twice");
            }
        }
        hazard.block = block;
        hazard.reason = reason;
        hazards->push_back(hazard);
    }
    return true;
}

bool readKeptHazards(const std::string& path, std::vector<KeptHazard>* hazards,
                     std::string* error) {
    hazards->clear();
    if (path.empty()) return true;
    std::string text;
    if (!sim::readFile(path, &text)) {
        *error = "cannot read the kept hazards " + path;
        return false;
    }
    return parseKeptHazards(text, path, hazards, error);
}

std::vector<sim::ExpectedFinding> declaredFor(const std::vector<KeptHazard>& hazards,
                                              const std::string& block) {
    std::vector<sim::ExpectedFinding> declared;
    for (const KeptHazard& hazard : hazards) {
        if (hazard.block == block) declared.push_back(hazard.expected);
    }
    return declared;
}

std::vector<std::string> heldAgainst(const std::vector<sim::FindingKind>& found,
                                     const std::vector<sim::ExpectedFinding>& declared) {
    std::map<sim::FindingKind, int> counts;
    for (sim::FindingKind kind : found) ++counts[kind];
    std::vector<std::string> broken;
    for (const auto& [kind, count] : counts) {
        const sim::FindingKind k = kind;
        if (std::none_of(declared.begin(), declared.end(),
                         [&](const sim::ExpectedFinding& d) { return d.kind == k; })) {
            broken.push_back(std::to_string(count) + " " + sim::findingName(kind) +
                             " finding(s), not declared");
        }
    }
    for (const sim::ExpectedFinding& d : declared) {
        const int count = counts.count(d.kind) != 0 ? counts[d.kind] : 0;
        if (count > 0 && (d.count < 0 || d.count == count)) continue;
        broken.push_back(std::string("declared ") +
                         (d.count >= 0 ? std::to_string(d.count) + " " : "") +
                         sim::findingName(d.kind) + ", found " + std::to_string(count));
    }
    return broken;
}

std::string summaryOf(const std::vector<sim::FindingKind>& found) {
    std::map<std::string, int> counts;
    for (sim::FindingKind kind : found) ++counts[sim::findingName(kind)];
    std::string text;
    for (const auto& [kind, count] : counts) {
        text += (text.empty() ? "" : " ") + kind + "=" + std::to_string(count);
    }
    return text.empty() ? "none" : text;
}

}  // namespace gen
