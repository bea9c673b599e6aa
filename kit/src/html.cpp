#include "html.h"

#include "page_style.h"

namespace lapwing {
namespace {

constexpr std::size_t longestName = 100;
constexpr const char* ellipsis = "\xE2\x80\xA6";

std::string_view entityOf(char character) {
    switch (character) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&#39;";
        default:
            return {};
    }
}

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::string withEntities(std::string_view text) {
    std::string markup;
    for (const char& character : text) {
        const std::string_view entity = entityOf(character);
        markup += entity.empty() ? std::string_view(&character, 1) : entity;
    }
    return markup;
}

std::string startOfTag(std::string_view tag, Attributes attributes) {
    std::string markup = "<";
    markup += tag;
    for (const Attribute& attribute : attributes) {
        if (!attribute.value.empty()) {
            markup.append(" ").append(attribute.name);
            markup += "=\"" + toHtml(attribute.value) + '"';
        }
    }
    return markup;
}

std::string cut(const std::string& line) {
    if (lengthOf(line) <= longestName) {
        return line;
    }
    std::size_t end = 0;
    for (std::size_t characters = 0; characters < longestName; ++characters) {
        do {
            ++end;
        } while (continuesCharacter(line[end]));
    }
    return line.substr(0, end) + ellipsis;
}

std::string alignment(const Column& column) {
    return column.align == Align::Left ? "text" : "";
}

std::string tableRow(const std::vector<Column>& columns, const Row& row) {
    std::string cells = element("th", {{"scope", "row"}}, row.front());
    for (std::size_t i = 1; i < row.size(); ++i) {
        cells += element("td", {{"class", alignment(columns[i])}}, row[i]);
    }
    return element("tr", cells) + '\n';
}

}  // namespace

std::string toHtml(std::string_view bytes) {
    return withEntities(onOneLine(bytes));
}

std::string element(std::string_view tag, Attributes attributes, std::string_view markup) {
    std::string whole = startOfTag(tag, attributes) + '>';
    whole.append(markup).append("</").append(tag);
    return whole + '>';
}

std::string element(std::string_view tag, std::string_view markup) {
    return element(tag, {}, markup);
}

std::string emptyElement(std::string_view tag, Attributes attributes) {
    return startOfTag(tag, attributes) + "/>";
}

std::string shortened(std::string_view bytes) {
    return bytes.empty() ? "(empty name)" : cut(onOneLine(bytes));
}

std::string nameToHtml(std::string_view bytes) {
    const std::string name = shortened(bytes);
    const std::string line = onOneLine(bytes);
    const bool isWhole = bytes.empty() || name == line;
    return element("bdi", {{"title", isWhole ? "" : line}}, withEntities(name));
}

std::string tableToHtml(const std::string& caption, const std::vector<Column>& columns,
                        const std::vector<Row>& rows) {
    std::string headings;
    for (const Column& column : columns) {
        headings += element("th", {{"scope", "col"}, {"class", alignment(column)}}, column.heading);
    }
    std::string body;
    for (const Row& row : rows) {
        body += tableRow(columns, row);
    }
    const std::string table =
        element("table", element("caption", toHtml(caption)) +
                             element("thead", element("tr", headings)) + element("tbody", body));
    return element(
        "div",
        {{"class", "scroll"}, {"role", "region"}, {"tabindex", "0"}, {"aria-label", caption}},
        table);
}

std::string pageToHtml(std::string_view title, std::string_view body) {
    static const char* const meta =
        "<meta charset=\"utf-8\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" "
        "content=\"default-src 'none'; style-src 'unsafe-inline'\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<meta name=\"color-scheme\" content=\"light dark\">\n";
    const std::string head =
        element("head", meta + element("title", toHtml(title)) + element("style", pageStyle));
    const std::string heading = element("h1", toHtml(title));
    return "<!DOCTYPE html>\n" +
           element("html", {{"lang", "en"}},
                   head + element("body", element("main", heading + std::string(body)))) +
           '\n';
}

}  // namespace lapwing
