#ifndef LAPWING_SRC_SHORT_TEXT_H
#define LAPWING_SRC_SHORT_TEXT_H

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace lapwing {

// A text of a few fixed words and numbers, composed without allocating.
class ShortText {
public:
    ShortText& append(std::string_view words) {
        end = std::copy(words.begin(), words.end(), end);
        return *this;
    }
    ShortText& append(std::int64_t number) {
        end = std::to_chars(end, characters.data() + characters.size(), number).ptr;
        return *this;
    }
    [[nodiscard]] std::string_view view() const {
        return {characters.data(), static_cast<std::size_t>(end - characters.data())};
    }

    ShortText() = default;
    ShortText(const ShortText&) = delete;
    ShortText& operator=(const ShortText&) = delete;

private:
    static constexpr std::size_t capacity = 80;

    std::array<char, capacity> characters;
    char* end = characters.data();
};

}  // namespace lapwing

#endif  // LAPWING_SRC_SHORT_TEXT_H
