#include "ledger.h"

#include <iomanip>
#include <sstream>

namespace faults {

namespace {

const char kTransportError[] = " -> transport-error";

bool endsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

std::string keyOf(const sim::World::RemoteOperation& op) {
    return op.party + " " + op.iface + "." + op.operation.name;
}

const char* yesNo(bool value) {
    return value ? "yes" : "no";
}

}  // namespace

Ledger::Ledger(const std::vector<sim::World::RemoteOperation>& operations) {
    for (const sim::World::RemoteOperation& op : operations) mEntries[keyOf(op)].operation = op;
}

Ledger::Entry* Ledger::entryOf(const std::string& line) {
    auto it = mEntries.find(line.substr(0, line.find('(')));
    return it == mEntries.end() ? nullptr : &it->second;
}

void Ledger::record(const std::vector<std::string>& lines, const std::string& failing,
                    const std::string& withheld) {
    for (const std::string& line : lines) {
        Entry* entry = entryOf(line);
        if (entry == nullptr) continue;
        entry->called = true;
        const sim::World::RemoteOperation& op = entry->operation;
        if (keyOf(op) == failing && endsWith(line, kTransportError)) entry->failed = true;
        if (!op.feature.empty() && op.party + " " + op.feature == withheld) entry->emptied = true;
    }
}

std::vector<std::string> Ledger::calledNeverFailed() const {
    std::vector<std::string> missing;
    for (const auto& [key, entry] : mEntries) {
        if (entry.called && !entry.failed) missing.push_back(key);
    }
    return missing;
}

std::vector<std::string> Ledger::calledNeverEmptied() const {
    std::vector<std::string> missing;
    for (const auto& [key, entry] : mEntries) {
        if (entry.called && !entry.operation.feature.empty() && !entry.emptied) {
            missing.push_back(key);
        }
    }
    return missing;
}

std::vector<std::string> Ledger::featuresServingNothing(
    const std::vector<std::pair<std::string, std::string>>& features) const {
    std::vector<std::string> idle;
    for (const auto& [party, feature] : features) {
        bool serves = false;
        for (const auto& [key, entry] : mEntries) {
            serves |= entry.operation.party == party && entry.operation.feature == feature;
        }
        if (!serves) idle.push_back(party + " " + feature);
    }
    return idle;
}

size_t Ledger::called() const {
    size_t n = 0;
    for (const auto& [key, entry] : mEntries) n += entry.called;
    return n;
}

size_t Ledger::failed() const {
    size_t n = 0;
    for (const auto& [key, entry] : mEntries) n += entry.failed;
    return n;
}

size_t Ledger::emptied() const {
    size_t n = 0;
    for (const auto& [key, entry] : mEntries) n += entry.emptied;
    return n;
}

// An object answer is emptied by withholding its feature; an object operation without
// one has nothing behind it and answers an empty reference on every call.
std::string Ledger::emptyAnswerText(const Entry& entry) const {
    const sim::World::RemoteOperation& op = entry.operation;
    if (op.operation.kind != sim::ResultKind::kObject) return "-";
    if (op.feature.empty()) return "always";
    return std::string(yesNo(entry.emptied)) + " (provide " + op.feature + " no)";
}

std::string Ledger::table() const {
    std::ostringstream out;
    out << std::left << std::setw(6) << "party" << std::setw(54) << "operation" << std::setw(8)
        << "called" << std::setw(8) << "failed"
        << "empty answer\n";
    for (const auto& [key, entry] : mEntries) {
        const sim::World::RemoteOperation& op = entry.operation;
        out << std::setw(6) << op.party << std::setw(54) << op.iface + "." + op.operation.name
            << std::setw(8) << yesNo(entry.called) << std::setw(8)
            << (entry.called ? yesNo(entry.failed) : "-") << emptyAnswerText(entry) << "\n";
    }
    return out.str();
}

}  // namespace faults
