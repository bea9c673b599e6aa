#include "text_table.h"

#include <lapwing/kit/file_text.h>

#include "utf8.h"

#include <algorithm>
#include <iomanip>
#include <locale>
#include <sstream>

namespace lapwing {
namespace {

bool startsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

std::string escaped(unsigned char control) {
    constexpr std::string_view digits = "0123456789abcdef";
    switch (control) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return {'\\', 'x', digits[control / 16U], digits[control % 16U]};
    }
}

// Control characters are 00 to 1F, 7F, and 80 to 9F, which UTF-8 writes as C2 and that byte.
bool isC1Control(std::string_view text) {
    return text.size() > 1 && text[0] == '\xC2' && static_cast<unsigned char>(text[1]) < 0xA0;
}

std::string padding(std::size_t width, const std::string& cell) {
    return std::string(width - lengthOf(cell), ' ');
}

std::string formatRow(const Row& row, const std::vector<Column>& columns,
                      const std::vector<std::size_t>& widths) {
    std::string line;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::string blanks = padding(widths[i], row[i]);
        line += i == 0 ? "" : "  ";
        line += columns[i].align == Align::Right ? blanks + row[i] : row[i] + blanks;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line + '\n';
}

}  // namespace

std::size_t lengthOf(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), startsCharacter));
}

std::string formatTable(const std::vector<Column>& columns, const std::vector<Row>& rows) {
    Row headings;
    std::vector<std::size_t> widths;
    for (const Column& column : columns) {
        headings.push_back(column.heading);
        widths.push_back(lengthOf(column.heading));
    }
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            widths[i] = std::max(widths[i], lengthOf(row[i]));
        }
    }
    std::string table = formatRow(headings, columns, widths);
    for (const Row& row : rows) {
        table += formatRow(row, columns, widths);
    }
    return table;
}

std::string onOneLine(std::string_view bytes) {
    if (!isUtf8(bytes)) {
        return toFileText(bytes);
    }
    std::string line;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (isC1Control(bytes.substr(i))) {
            line += escaped(static_cast<unsigned char>(bytes[++i]));
        } else if (byte < 0x20 || byte == 0x7F) {
            line += escaped(byte);
        } else {
            line += bytes[i];
        }
    }
    return line;
}

std::string formatTime(std::chrono::duration<double, std::milli> time, int decimals) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::fixed << std::setprecision(decimals) << time.count() << " ms";
    return text.str();
}

}  // namespace lapwing
