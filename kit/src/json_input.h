// What the readers of JSON files share around nlohmann's parser.

#ifndef LAPWING_KIT_SRC_JSON_INPUT_H
#define LAPWING_KIT_SRC_JSON_INPUT_H

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

namespace lapwing {

struct TextPosition {
    std::size_t line = 1;
    std::size_t column = 1;

    void moveOver(std::string_view text) {
        const std::size_t lastNewline = text.rfind('\n');
        if (lastNewline == std::string_view::npos) {
            column += text.size();
            return;
        }
        line += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
        column = text.size() - lastNewline;
    }

    // FILE:LINE:COLUMN
    [[nodiscard]] std::string in(const std::string& file) const {
        return file + ':' + std::to_string(line) + ':' + std::to_string(column);
    }
};

// The parser's way to an input that has atEnd(), current() and advance(). Without an input, it
// stands for the end of any.
template <class Input>
class InputIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = char;

    InputIterator() = default;
    explicit InputIterator(Input& fileInput) : input(&fileInput) {}

    char operator*() const { return input->current(); }
    InputIterator& operator++() {
        input->advance();
        return *this;
    }
    friend bool operator==(const InputIterator& iterator, const InputIterator& /*end*/) {
        return iterator.input->atEnd();
    }
    friend bool operator!=(const InputIterator& iterator, const InputIterator& end) {
        return !(iterator == end);
    }

private:
    Input* input = nullptr;
};

// What the parser says of an error, without what concerns only the parser.
inline std::string reasonOf(const std::string& message) {
    constexpr std::string_view separator = " - ";
    const std::size_t start = message.find(separator);
    const std::size_t end = message.find("; last read: ");
    return "not JSON: " + message.substr(start + separator.size(), end - start - separator.size());
}

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_JSON_INPUT_H
