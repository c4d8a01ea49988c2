// Lexing of scenario files.
#include "lexer.h"

namespace sim {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Reads the escape at text[*i] (just after the backslash) into *out.
bool readEscape(const std::string& text, size_t* i, std::string* out, std::string* error) {
    if (*i >= text.size()) {
        *error = "unterminated string";
        return false;
    }
    const char c = text[(*i)++];
    switch (c) {
        case '"':
            *out += '"';
            return true;
        case '\\':
            *out += '\\';
            return true;
        case 'n':
            *out += '\n';
            return true;
        case 'r':
            *out += '\r';
            return true;
        case 't':
            *out += '\t';
            return true;
        case '0':
            *out += '\0';
            return true;
        case 'x':
            break;
        default:
            *error = std::string("unknown escape \\") + c;
            return false;
    }
    const int high = *i < text.size() ? hexDigit(text[*i]) : -1;
    const int low = *i + 1 < text.size() ? hexDigit(text[*i + 1]) : -1;
    if (high < 0 || low < 0) {
        *error = "\\x needs two hex digits";
        return false;
    }
    *out += static_cast<char>(high << 4 | low);
    *i += 2;
    return true;
}

// A quoted string starting at text[*i] == '"'.
bool readQuoted(const std::string& text, size_t* i, Token* token, std::string* error) {
    token->quoted = true;
    for (++*i; *i < text.size();) {
        const char c = text[(*i)++];
        if (c == '"') return true;
        if (c != '\\') {
            token->text += c;
        } else if (!readEscape(text, i, &token->text, error)) {
            return false;
        }
    }
    *error = "unterminated string";
    return false;
}

// A plain word starting at text[*i]; blanks inside {...} and [...] belong to it.
bool readWord(const std::string& text, size_t* i, Token* token, std::string* error) {
    std::string closers;
    for (; *i < text.size(); ++*i) {
        const char c = text[*i];
        if (c == '#' || (closers.empty() && isBlank(c))) break;
        if (c == '"') {
            *error = "a quote inside a word";
            return false;
        }
        if (c == '{' || c == '[') closers += c == '{' ? '}' : ']';
        if (c == '}' || c == ']') {
            if (closers.empty() || closers.back() != c) {
                *error = std::string("unexpected ") + c;
                return false;
            }
            closers.pop_back();
        }
        token->text += c;
    }
    if (!closers.empty()) {
        *error = std::string("missing ") + closers.back();
        return false;
    }
    return true;
}

}  // namespace

bool takesVerbatimText(const std::string& keyword) {
    return keyword == "expect" || keyword == "expect-prefix" || keyword == "expect-not";
}

bool lexTokens(const std::string& text, std::vector<Token>* tokens, std::string* error) {
    tokens->clear();
    size_t i = 0;
    while (true) {
        while (i < text.size() && isBlank(text[i])) ++i;
        if (i == text.size() || text[i] == '#') return true;
        Token token;
        const bool ok = text[i] == '"' ? readQuoted(text, &i, &token, error)
                                       : readWord(text, &i, &token, error);
        if (!ok) return false;
        if (i < text.size() && !isBlank(text[i]) && text[i] != '#') {
            *error = "a quoted string must be followed by a blank";
            return false;
        }
        tokens->push_back(std::move(token));
    }
}

bool lexLine(const std::string& text, Line* line, std::string* error) {
    line->tokens.clear();
    line->hasVerbatim = false;
    line->verbatim.clear();
    const size_t start = text.find_first_not_of(" \t");
    if (start == std::string::npos) return true;
    const size_t end = std::min(text.find_first_of(" \t", start), text.size());
    const std::string keyword = text.substr(start, end - start);
    if (!takesVerbatimText(keyword)) return lexTokens(text, &line->tokens, error);
    if (end == text.size()) {
        *error = keyword + " needs a text";
        return false;
    }
    line->tokens.push_back(Token{keyword, false});
    line->hasVerbatim = true;
    line->verbatim = text.substr(end + 1);
    return true;
}

std::string location(const Line& line) {
    return line.file + ":" + std::to_string(line.number);
}

bool lexScenario(const std::string& text, std::vector<Line>* lines, int* errorLine,
                 std::string* error) {
    lines->clear();
    size_t start = 0;
    for (int number = 1; start < text.size(); ++number) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        std::string content = text.substr(start, end - start);
        if (!content.empty() && content.back() == '\r') content.pop_back();
        start = end + 1;
        Line line;
        line.number = number;
        line.text = content;
        if (!lexLine(content, &line, error)) {
            *errorLine = number;
            return false;
        }
        if (!line.tokens.empty()) lines->push_back(std::move(line));
    }
    return true;
}

}  // namespace sim
