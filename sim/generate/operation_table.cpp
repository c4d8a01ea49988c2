#include "operation_table.h"

#include <sstream>

#include "scenario_file.h"

namespace gen {

namespace {

std::vector<std::string> words(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> all;
    std::string word;
    while (in >> word) all.push_back(word);
    return all;
}

std::string trimmed(const std::string& text) {
    const size_t start = text.find_first_not_of(" \t");
    if (start == std::string::npos) return "";
    const size_t end = text.find_last_not_of(" \t\r");
    return text.substr(start, end - start + 1);
}

class TableReader {
  public:
    TableReader(const std::string& file, OperationTable* table) : mFile(file), mTable(table) {}

    bool line(const std::string& raw, int number, std::string* error) {
        mNumber = number;
        const std::string text = trimmed(raw);
        if (text.empty() || text[0] == '#') return true;
        if (raw[0] == ' ' || raw[0] == '\t') return entryLine(text, error);
        mBody = nullptr;
        const std::vector<std::string> w = words(text);
        if (w[0] == "state") return state(w, error);
        if (w[0] == "post") return post(w, error);
        if (w[0] == "op") return operation(w, error);
        if (w[0] == "nest") return nesting(w, error);
        if (w[0] == "left-out") return leftOut(text, 8, &mTable->leftOut, error);
        if (w[0] == "explore-only") return leftOut(text, 12, &mTable->exploreOnly, error);
        return fail("unknown entry \"" + w[0] + "\"", error);
    }

    bool finish(std::string* error) {
        for (const TableOperation& op : mTable->operations) {
            mNumber = op.line;
            if (op.values.empty()) return fail("operation " + op.name + " has no value", error);
            for (const std::string& state : op.states) {
                if (mTable->state(state) == nullptr) {
                    return fail("operation " + op.name + " names no state \"" + state + "\"",
                                error);
                }
            }
        }
        for (const TableNesting& nesting : mTable->nestings) {
            mNumber = nesting.line;
            if (nesting.events.empty()) return fail("a nest entry needs an event", error);
        }
        for (const TableLeftOut& only : mTable->exploreOnly) {
            mNumber = only.line;
            if (only.command.find(':') == std::string::npos && !isOperation(only.command)) {
                return fail("explore-only names no operation \"" + only.command + "\"", error);
            }
        }
        return true;
    }

  private:
    bool fail(const std::string& reason, std::string* error) const {
        *error = mFile + ":" + std::to_string(mNumber) + ": " + reason;
        return false;
    }

    bool entryLine(const std::string& text, std::string* error) {
        if (mBody == nullptr) return fail("an indented line belongs to an entry above it", error);
        mBody->push_back(text);
        return true;
    }

    bool isOperation(const std::string& name) const {
        for (const TableOperation& op : mTable->operations) {
            if (op.name == name) return true;
        }
        return false;
    }

    TableState* findState(const std::string& name) {
        for (TableState& s : mTable->states) {
            if (s.name == name) return &s;
        }
        return nullptr;
    }

    // state NAME [after BASE]
    bool state(const std::vector<std::string>& w, std::string* error) {
        if (!(w.size() == 2 || (w.size() == 4 && w[2] == "after"))) {
            return fail("usage: state NAME [after BASE]", error);
        }
        if (findState(w[1]) != nullptr) return fail("state " + w[1] + " is declared twice", error);
        TableState s;
        s.name = w[1];
        s.line = mNumber;
        if (w.size() == 4) {
            const TableState* base = findState(w[3]);
            if (base == nullptr) return fail("no state \"" + w[3] + "\" before this one", error);
            s.prelude = base->prelude;
            s.post = base->post;
        }
        mTable->states.push_back(s);
        mBody = &mTable->states.back().prelude;
        return true;
    }

    // post NAME: replaces what the state took from its base.
    bool post(const std::vector<std::string>& w, std::string* error) {
        TableState* s = w.size() == 2 ? findState(w[1]) : nullptr;
        if (s == nullptr) return fail("usage: post STATE, after the state", error);
        s->post.clear();
        mBody = &s->post;
        return true;
    }

    // op NAME in STATE...
    bool operation(const std::vector<std::string>& w, std::string* error) {
        if (w.size() < 4 || w[2] != "in") return fail("usage: op NAME in STATE...", error);
        for (const TableOperation& op : mTable->operations) {
            if (op.name == w[1]) return fail("operation " + w[1] + " is declared twice", error);
        }
        TableOperation op;
        op.name = w[1];
        op.states.assign(w.begin() + 3, w.end());
        op.line = mNumber;
        mTable->operations.push_back(op);
        mBody = &mTable->operations.back().values;
        return true;
    }

    // nest PARTY [INTERFACE-PREFIX]
    bool nesting(const std::vector<std::string>& w, std::string* error) {
        if (w.size() < 2 || w.size() > 3 || (w[1] != "fusd" && w[1] != "vhal" && w[1] != "fw")) {
            return fail("usage: nest fusd|vhal|fw [INTERFACE-PREFIX]", error);
        }
        mTable->nestings.push_back({w[1], w.size() == 3 ? w[2] : "", {}, mNumber});
        mBody = &mTable->nestings.back().events;
        return true;
    }

    // left-out COMMAND: REASON, explore-only OPERATION: REASON
    bool leftOut(const std::string& text, size_t keyword, std::vector<TableLeftOut>* into,
                 std::string* error) {
        const size_t colon = text.find(':');
        const std::string what =
            colon == std::string::npos ? "" : trimmed(text.substr(keyword, colon - keyword));
        const std::string reason =
            colon == std::string::npos ? "" : trimmed(text.substr(colon + 1));
        if (what.empty() || reason.empty()) {
            return fail("usage: " + text.substr(0, keyword) + " NAME: REASON", error);
        }
        into->push_back({what, reason, mNumber});
        return true;
    }

    const std::string mFile;
    OperationTable* mTable;
    std::vector<std::string>* mBody = nullptr;  // where the indented lines go
    int mNumber = 0;
};

}  // namespace

const TableState* OperationTable::state(const std::string& name) const {
    for (const TableState& s : states) {
        if (s.name == name) return &s;
    }
    return nullptr;
}

bool parseOperationTable(const std::string& text, const std::string& file, OperationTable* table,
                         std::string* error) {
    *table = OperationTable();
    table->file = file;
    TableReader reader(file, table);
    std::istringstream in(text);
    std::string line;
    int number = 0;
    while (std::getline(in, line)) {
        if (!reader.line(line, ++number, error)) return false;
    }
    return reader.finish(error);
}

bool readOperationTable(const std::string& path, OperationTable* table, std::string* error) {
    std::string text;
    if (!sim::readFile(path, &text)) {
        *error = "cannot read the operation table " + path;
        return false;
    }
    return parseOperationTable(text, path, table, error);
}

std::string commandOf(const std::string& line) {
    const std::vector<std::string> w = words(line);
    if (w.size() < 2) return w.empty() ? "" : w[0];
    return w[0] + " " + w[1];
}

}  // namespace gen
