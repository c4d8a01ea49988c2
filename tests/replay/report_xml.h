// A small, strict XML reader for the timeline tests: it accepts only well-formed documents
// (matched tags, quoted unique attributes, known entity references, no stray '<' or '&',
// valid UTF-8 without control characters) and returns the element tree with text decoded.
#pragma once

#include <cctype>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace replay::xmltest {

struct Element {
    std::string name;
    std::map<std::string, std::string> attributes;
    std::vector<Element> children;
    std::string text;  // all character data inside, descendants included

    std::string attribute(const std::string& key) const {
        auto it = attributes.find(key);
        return it == attributes.end() ? std::string() : it->second;
    }
};

inline void collect(const Element& element, const std::function<bool(const Element&)>& wanted,
                    std::vector<const Element*>* found) {
    if (wanted(element)) found->push_back(&element);
    for (const Element& child : element.children) collect(child, wanted, found);
}

inline std::vector<const Element*> withClass(const Element& root, const std::string& cssClass) {
    std::vector<const Element*> found;
    collect(
        root, [&](const Element& e) { return e.attribute("class") == cssClass; }, &found);
    return found;
}

class Reader {
  public:
    explicit Reader(const std::string& xml) : mXml(xml) {}

    bool document(Element* root, std::string* error) {
        if (!validCharacters()) return fail(error);
        if (startsWith("<?xml")) skipPast("?>");
        skipMisc();
        if (!element(root)) return fail(error);
        skipMisc();
        if (mPos != mXml.size()) mError = "content after the root element";
        return mError.empty() || fail(error);
    }

  private:
    bool fail(std::string* error) {
        if (mError.empty()) mError = "malformed";
        *error = mError + " at byte " + std::to_string(mPos);
        return false;
    }
    bool problem(const std::string& what) {
        if (mError.empty()) mError = what;
        return false;
    }
    bool startsWith(const char* s) const { return mXml.compare(mPos, strlen(s), s) == 0; }
    bool skipPast(const char* end) {
        const size_t found = mXml.find(end, mPos);
        if (found == std::string::npos) return problem(std::string("no closing ") + end);
        mPos = found + strlen(end);
        return true;
    }
    void skipSpace() {
        while (mPos < mXml.size() && strchr(" \t\r\n", mXml[mPos]) != nullptr) ++mPos;
    }
    void skipMisc() {
        for (skipSpace(); startsWith("<!--") || startsWith("<?"); skipSpace()) {
            if (startsWith("<!--") ? !comment() : !skipPast("?>")) return;
        }
    }
    bool comment() {
        const size_t end = mXml.find("-->", mPos + 4);
        if (end == std::string::npos) return problem("unclosed comment");
        if (mXml.substr(mPos + 4, end - mPos - 4).find("--") != std::string::npos) {
            return problem("'--' inside a comment");
        }
        mPos = end + 3;
        return true;
    }

    bool validCharacters() {
        for (size_t i = 0; i < mXml.size();) {
            const auto lead = static_cast<uint8_t>(mXml[i]);
            size_t length = lead < 0x80         ? 1
                            : (lead >> 5) == 6  ? 2
                            : (lead >> 4) == 14 ? 3
                            : (lead >> 3) == 30 ? 4
                                                : 0;
            if (length == 0 || i + length > mXml.size()) return problem("invalid UTF-8");
            for (size_t k = 1; k < length; ++k) {
                if ((static_cast<uint8_t>(mXml[i + k]) & 0xC0) != 0x80) {
                    return problem("invalid UTF-8");
                }
            }
            if (length == 1 && lead < 0x20 && lead != '\t' && lead != '\n' && lead != '\r') {
                return problem("control character");
            }
            i += length;
        }
        return true;
    }

    static bool nameStart(char c) {
        return isalpha(static_cast<unsigned char>(c)) || c == '_' || c == ':';
    }
    static bool nameChar(char c) {
        return nameStart(c) || isdigit(static_cast<unsigned char>(c)) || c == '-' || c == '.';
    }
    bool name(std::string* out) {
        if (mPos >= mXml.size() || !nameStart(mXml[mPos])) return problem("name expected");
        const size_t start = mPos;
        while (mPos < mXml.size() && nameChar(mXml[mPos])) ++mPos;
        *out = mXml.substr(start, mPos - start);
        return true;
    }

    bool reference(std::string* out) {
        const size_t end = mXml.find(';', mPos);
        if (end == std::string::npos) return problem("unterminated reference");
        const std::string ref = mXml.substr(mPos + 1, end - mPos - 1);
        static const std::map<std::string, std::string> named = {
            {"amp", "&"}, {"lt", "<"}, {"gt", ">"}, {"quot", "\""}, {"apos", "'"}};
        if (auto it = named.find(ref); it != named.end()) {
            *out += it->second;
        } else if (ref.size() > 1 && ref[0] == '#' &&
                   ref.find_first_not_of(ref[1] == 'x' ? "0123456789abcdefABCDEF" : "0123456789",
                                         ref[1] == 'x' ? 2 : 1) == std::string::npos &&
                   ref != "#x") {
            *out += '?';  // character references are checked, not decoded
        } else {
            return problem("unknown reference &" + ref + ";");
        }
        mPos = end + 1;
        return true;
    }

    bool attributes(Element* element) {
        for (;;) {
            const size_t before = mPos;
            skipSpace();
            if (startsWith("/>") || startsWith(">")) return true;
            if (mPos == before) return problem("space expected before an attribute");
            std::string key;
            if (!name(&key)) return false;
            skipSpace();
            if (!startsWith("=")) return problem("'=' expected");
            ++mPos;
            skipSpace();
            if (mPos >= mXml.size() || (mXml[mPos] != '"' && mXml[mPos] != '\'')) {
                return problem("quoted value expected");
            }
            const char quote = mXml[mPos++];
            std::string value;
            while (mPos < mXml.size() && mXml[mPos] != quote) {
                if (mXml[mPos] == '<') return problem("'<' in an attribute value");
                if (mXml[mPos] == '&') {
                    if (!reference(&value)) return false;
                } else {
                    value += mXml[mPos++];
                }
            }
            if (mPos >= mXml.size()) return problem("unterminated attribute value");
            ++mPos;
            if (!element->attributes.emplace(key, value).second) {
                return problem("attribute " + key + " given twice");
            }
        }
    }

    bool element(Element* element) {
        if (!startsWith("<")) return problem("element expected");
        ++mPos;
        if (!name(&element->name) || !attributes(element)) return false;
        if (startsWith("/>")) {
            mPos += 2;
            return true;
        }
        ++mPos;  // '>'
        return content(element);
    }

    bool content(Element* element) {
        while (mPos < mXml.size()) {
            if (startsWith("</")) {
                mPos += 2;
                std::string closing;
                if (!name(&closing)) return false;
                skipSpace();
                if (closing != element->name || !startsWith(">")) {
                    return problem("</" + closing + "> closes <" + element->name + ">");
                }
                ++mPos;
                return true;
            }
            if (startsWith("<![CDATA[")) {
                const size_t end = mXml.find("]]>", mPos);
                if (end == std::string::npos) return problem("unclosed CDATA");
                element->text += mXml.substr(mPos + 9, end - mPos - 9);
                mPos = end + 3;
            } else if (startsWith("<!--")) {
                if (!comment()) return false;
            } else if (startsWith("<?")) {
                if (!skipPast("?>")) return false;
            } else if (startsWith("<")) {
                element->children.emplace_back();
                if (!this->element(&element->children.back())) return false;
                element->text += element->children.back().text;
            } else if (startsWith("&")) {
                if (!reference(&element->text)) return false;
            } else if (startsWith("]]>")) {
                return problem("']]>' in text");
            } else {
                element->text += mXml[mPos++];
            }
        }
        return problem("<" + element->name + "> not closed");
    }

    const std::string& mXml;
    size_t mPos = 0;
    std::string mError;
};

inline bool parseDocument(const std::string& xml, Element* root, std::string* error) {
    return Reader(xml).document(root, error);
}

}  // namespace replay::xmltest
