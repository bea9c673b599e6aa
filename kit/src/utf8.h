// Which bytes are UTF-8.

#ifndef LAPWING_KIT_SRC_UTF8_H
#define LAPWING_KIT_SRC_UTF8_H

#include <cstddef>
#include <string_view>

namespace lapwing {

// Strict: neither surrogates nor overlong forms, and nothing beyond U+10FFFF. Defined with the form
// of texts in files.
bool isUtf8(std::string_view text);

// How many bytes at the start of `text` are UTF-8.
std::size_t utf8Prefix(std::string_view text);

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_UTF8_H
