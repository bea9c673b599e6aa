/// @file
/// How names, notes and labels stand in files. They are byte strings: text that is UTF-8 stands as
/// it is; other bytes, and text that begins with "hex:", stand as "hex:" and their bytes in
/// lowercase hexadecimal. So each byte string has exactly one form.
///
/// Any number of threads may call these functions at once.

#ifndef LAPWING_KIT_FILE_TEXT_H
#define LAPWING_KIT_FILE_TEXT_H

#include <string>
#include <string_view>

namespace lapwing {

/// Returns the form in which `bytes` stand in a file.
[[nodiscard]] std::string toFileText(std::string_view bytes);

/// Returns the bytes that stand in a file as `text`. Throws std::invalid_argument if `text` is not
/// UTF-8, or is "hex:" with anything but pairs of lowercase hexadecimal digits, or with bytes that
/// plain text could hold.
[[nodiscard]] std::string fromFileText(std::string_view text);

}  // namespace lapwing

#endif  // LAPWING_KIT_FILE_TEXT_H
