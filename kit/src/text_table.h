// Tables for people, and text that cannot disturb a terminal.

#ifndef LAPWING_KIT_SRC_TEXT_TABLE_H
#define LAPWING_KIT_SRC_TEXT_TABLE_H

#include <chrono>
#include <cstddef>
#include <ratio>
#include <string>
#include <string_view>
#include <vector>

namespace lapwing {

enum class Align { Left, Right };

struct Column {
    std::string heading;
    Align align = Align::Right;
};

using Row = std::vector<std::string>;  // a cell for each column, in UTF-8

// Returns lines of equal columns, two spaces apart, without blanks at their ends.
std::string formatTable(const std::vector<Column>& columns, const std::vector<Row>& rows);

// Returns any bytes as UTF-8 on one line: control characters are escaped, and what is not UTF-8
// stands as in files.
std::string onOneLine(std::string_view bytes);

// Returns how many characters the UTF-8 text has.
std::size_t lengthOf(std::string_view text);

// Returns the time with a point and `decimals` digits behind it, and its unit.
std::string formatTime(std::chrono::duration<double, std::milli> time, int decimals);

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_TEXT_TABLE_H
