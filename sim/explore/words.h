// The blank-separated words of a run's message, read one after another in place: the
// explorer reads thousands of messages a second, and a stream per message costs more than
// the rest of reading it.
#pragma once

#include <charconv>
#include <string_view>

namespace explore {

class Words {
  public:
    explicit Words(std::string_view text) : mText(text) {}

    // The next word; false when none is left.
    bool next(std::string_view* word) {
        const size_t start = mText.find_first_not_of(' ');
        if (start == std::string_view::npos) return false;
        const size_t end = mText.find(' ', start);
        *word = mText.substr(start, end == std::string_view::npos ? end : end - start);
        mText = end == std::string_view::npos ? std::string_view() : mText.substr(end);
        return true;
    }

    // The next word as a whole number; false when none is left or it is not one.
    template <typename Number>
    bool number(Number* value) {
        std::string_view word;
        return next(&word) && toNumber(word, value);
    }

    template <typename Number>
    static bool toNumber(std::string_view word, Number* value) {
        const char* end = word.data() + word.size();
        const auto [stop, error] = std::from_chars(word.data(), end, *value);
        return error == std::errc() && stop == end;
    }

  private:
    std::string_view mText;
};

}  // namespace explore
