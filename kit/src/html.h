// Elements of HTML and SVG as text. "Markup" is text that is written as it is; bytes are escaped.

#ifndef LAPWING_KIT_SRC_HTML_H
#define LAPWING_KIT_SRC_HTML_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "text_table.h"

namespace lapwing {

struct Attribute {
    std::string_view name;
    std::string value;  // bytes; without any, the attribute is left out
};

using Attributes = std::initializer_list<Attribute>;

// Returns any bytes as markup that shows them on one line, as onOneLine() does.
std::string toHtml(std::string_view bytes);

std::string element(std::string_view tag, Attributes attributes, std::string_view markup);
std::string element(std::string_view tag, std::string_view markup);

// An element of SVG that holds nothing.
std::string emptyElement(std::string_view tag, Attributes attributes);

// Shows a name among other text, whatever its direction. A long one is cut, and stands in the title
// as a whole.
std::string nameToHtml(std::string_view bytes);

// The name as text for titles, cut if it is long.
std::string shortened(std::string_view bytes);

// A table in a container that scrolls when it is too wide. The cells are markup, and the first one
// of each row is its heading.
std::string tableToHtml(const std::string& caption, const std::vector<Column>& columns,
                        const std::vector<Row>& rows);

// The page as a whole. The title is bytes.
std::string pageToHtml(std::string_view title, std::string_view body);

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_HTML_H
