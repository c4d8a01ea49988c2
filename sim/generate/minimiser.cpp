#include "minimiser.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

#include "finding_report.h"
#include "operation_table.h"

namespace gen {

namespace {

using explore::BlockFinding;
using explore::BlockResult;
using sim::FindingKind;

// "operation 1.2 call sendLocationDataToTarvi loc{...}" -> "call sendLocationDataToTarvi";
// a party's or the after part's heading stays as it is.
std::string partOf(const std::string& heading) {
    if (heading.rfind("operation ", 0) != 0) return heading;
    std::istringstream in(heading);
    std::string word, key, first, second;
    in >> word >> key >> first >> second;
    return first == "delivery" ? first : first + " " + second;
}

const std::string* nearestSerial(const std::string& outcome,
                                 const std::vector<std::string>& serialOutcomes,
                                 std::vector<explore::DiffLine>* diff) {
    const std::string* nearest = nullptr;
    for (const std::string& serial : serialOutcomes) {
        std::vector<explore::DiffLine> d = explore::diffLines(serial, outcome);
        if (nearest == nullptr || explore::diffSize(d) < explore::diffSize(*diff)) {
            *diff = std::move(d);
            nearest = &serial;
        }
    }
    return nearest;
}

std::vector<std::pair<std::string, std::string>> changedLines(
    const std::string& outcome, const std::vector<std::string>& serialOutcomes) {
    std::vector<explore::DiffLine> diff;
    std::vector<std::pair<std::string, std::string>> changed;  // heading, "+ line"
    if (nearestSerial(outcome, serialOutcomes, &diff) == nullptr) return changed;
    std::string heading;
    for (const explore::DiffLine& line : diff) {
        const bool isHeading = !line.text.empty() && line.text[0] != ' ';
        if (isHeading) heading = line.text;
        if (line.mark != ' ') {
            changed.emplace_back(isHeading ? line.text : heading,
                                 std::string(1, line.mark) + " " + line.text);
        }
    }
    return changed;
}

// Every way of removing one element of a `{...}` or `[...]` value in `line`.
std::vector<std::string> lessDetail(const std::string& line) {
    std::vector<std::string> shorter;
    for (size_t open = line.find_first_of("{["); open != std::string::npos;
         open = line.find_first_of("{[", open + 1)) {
        const size_t close = line.find_first_of("}]", open);
        if (close == std::string::npos) break;
        const std::string inner = line.substr(open + 1, close - open - 1);
        std::vector<std::string> elements;
        std::istringstream in(inner);
        std::string element;
        while (in >> element) elements.push_back(element);
        for (size_t drop = 0; drop < elements.size(); ++drop) {
            std::string kept;
            for (size_t i = 0; i < elements.size(); ++i) {
                if (i != drop) kept += (kept.empty() ? "" : " ") + elements[i];
            }
            shorter.push_back(line.substr(0, open + 1) + kept + line.substr(close));
        }
    }
    return shorter;
}

std::vector<GeneratedBlock> candidates(const GeneratedBlock& block) {
    std::vector<GeneratedBlock> all;
    for (size_t i = block.post.size(); i-- > 0;) {
        GeneratedBlock c = block;
        c.post.erase(c.post.begin() + static_cast<long>(i));
        all.push_back(c);
    }
    // An operation moved into the init part or the post part: the first or last command
    // of a branch of several, or a whole branch while more than two remain.
    for (size_t b = 0; b < block.branches.size(); ++b) {
        const auto& branch = block.branches[b];
        const bool whole = branch.size() == 1;
        if (whole && block.branches.size() <= 2) continue;
        GeneratedBlock init = block;
        init.prelude.push_back(branch.front());
        auto& fromInit = init.branches[b];
        fromInit.erase(fromInit.begin());
        if (fromInit.empty()) init.branches.erase(init.branches.begin() + static_cast<long>(b));
        all.push_back(init);
        GeneratedBlock post = block;
        post.post.insert(post.post.begin(), branch.back());
        auto& fromPost = post.branches[b];
        fromPost.pop_back();
        if (fromPost.empty()) post.branches.erase(post.branches.begin() + static_cast<long>(b));
        all.push_back(post);
    }
    for (size_t i = block.prelude.size(); i-- > 0;) {
        GeneratedBlock c = block;
        c.prelude.erase(c.prelude.begin() + static_cast<long>(i));
        all.push_back(c);
    }
    for (size_t b = 0; b < block.branches.size(); ++b) {
        for (size_t i = 0; i < block.branches[b].size(); ++i) {
            for (const std::string& line : lessDetail(block.branches[b][i])) {
                GeneratedBlock c = block;
                c.branches[b][i] = line;
                all.push_back(c);
            }
        }
    }
    for (size_t i = 0; i < block.prelude.size(); ++i) {
        for (const std::string& line : lessDetail(block.prelude[i])) {
            GeneratedBlock c = block;
            c.prelude[i] = line;
            all.push_back(c);
        }
    }
    return all;
}

size_t countOf(const BlockResult& result, FindingKind kind) {
    return static_cast<size_t>(
        std::count_if(result.findings.begin(), result.findings.end(),
                      [&](const BlockFinding& f) { return f.kind == kind; }));
}

}  // namespace

std::string FindingShape::describe() const {
    std::string text = std::string(sim::findingName(kind)) + " finding";
    for (size_t i = 0; i < parts.size(); ++i) text += (i == 0 ? " in " : ", ") + parts[i];
    return text;
}

std::vector<std::string> differenceLines(const std::string& outcome,
                                         const std::vector<std::string>& serialOutcomes) {
    std::vector<explore::DiffLine> diff;
    if (nearestSerial(outcome, serialOutcomes, &diff) == nullptr) return {};
    std::ostringstream text;
    explore::printDiff(text, diff, "");
    std::vector<std::string> lines;
    std::istringstream in(text.str());
    std::string line;
    while (std::getline(in, line)) lines.push_back(line);
    return lines;
}

FindingShape shapeOf(const BlockFinding& finding, const BlockResult& result) {
    FindingShape shape;
    shape.kind = finding.kind;
    std::set<std::string> parts;
    if (finding.kind == FindingKind::kNonSerial) {
        for (const auto& change : changedLines(finding.key, result.serialOutcomes)) {
            parts.insert(partOf(change.first));
        }
        if (parts.size() > 1) parts.erase("after");
    } else if (finding.kind == FindingKind::kLockAcrossCall) {
        parts.insert(finding.key.substr(0, finding.key.find(' ')));
    } else if (finding.kind == FindingKind::kRefused) {
        // "refused COMMAND: REASON"
        const std::string refused = finding.detail.substr(finding.detail.find(' ') + 1);
        parts.insert(commandOf(refused.substr(0, refused.find(": "))));
    }
    shape.parts.assign(parts.begin(), parts.end());
    return shape;
}

const BlockFinding* findShape(const BlockResult& result, const FindingShape& wanted) {
    for (const BlockFinding& finding : result.findings) {
        if (finding.kind != wanted.kind) continue;
        if (wanted.parts.empty()) return &finding;
        const FindingShape shape = shapeOf(finding, result);
        for (const std::string& part : shape.parts) {
            if (std::find(wanted.parts.begin(), wanted.parts.end(), part) != wanted.parts.end()) {
                return &finding;
            }
        }
    }
    return nullptr;
}

Minimised minimise(const GeneratedBlock& start, const BlockResult& startResult,
                   const BlockFinding& finding, const BlockRunner& run) {
    const FindingShape wanted = shapeOf(finding, startResult);
    Minimised best{start, startResult, finding, 0};
    for (bool smaller = true; smaller;) {
        smaller = false;
        for (const GeneratedBlock& candidate : candidates(best.block)) {
            ++best.candidates;
            const BlockResult result = run(scenarioText(candidate));
            if (result.broken) continue;
            const BlockFinding* same = findShape(result, wanted);
            if (same == nullptr) continue;
            best.block = candidate;
            best.result = result;
            best.finding = *same;
            smaller = true;
            break;
        }
    }
    return best;
}

std::string minimisedScenario(const Minimised& minimised, const std::string& origin) {
    const BlockFinding& f = minimised.finding;
    const FindingShape shape = shapeOf(f, minimised.result);
    std::vector<std::string> comment = {
        "Found by the generated pair " + origin + ", minimised (" +
            std::to_string(minimised.candidates) + " smaller blocks tried).",
        "It shows a " + shape.describe() + (f.detail.empty() ? "." : ": " + f.detail),
    };
    if (f.kind == FindingKind::kNonSerial) {
        comment.push_back("Its outcome against the nearest serial outcome (- only there, + only");
        comment.push_back("in this run):");
        for (const std::string& line : differenceLines(f.key, minimised.result.serialOutcomes)) {
            comment.push_back("  " + line);
        }
    }
    comment.push_back("Schedule " + f.schedule + " (zdgnss-sim explore --schedule " + f.schedule +
                      " FILE).");
    std::vector<std::string> declarations;
    std::set<FindingKind> kinds;
    for (const BlockFinding& any : minimised.result.findings) kinds.insert(any.kind);
    for (FindingKind kind : kinds) {
        declarations.push_back(std::string("expect-finding ") + sim::findingName(kind) + " " +
                               std::to_string(countOf(minimised.result, kind)));
    }
    return scenarioText(minimised.block, comment, declarations);
}

}  // namespace gen
