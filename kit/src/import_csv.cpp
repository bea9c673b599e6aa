#include <lapwing/kit/import.h>

#include <lapwing/kit/file_text.h>

#include "import_input.h"
#include "recording_format.h"
#include "setting_text.h"

#include <charconv>
#include <cstdint>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

namespace lapwing {
namespace {

class CsvReader {
public:
    CsvReader(std::istream& stream, const std::string& name) : input(stream), file(name) {}

    TimingProfile read();

private:
    using Fields = std::vector<std::string>;

    void skipByteOrderMark();
    Fields takeRecord();
    std::string takeField();
    std::string takeQuoted();
    void append(std::string& field);
    bool takeLineEnd();
    bool skip(char byte);
    void addSample(const Fields& fields);
    [[nodiscard]] std::string nameOf(const std::string& field) const;
    [[nodiscard]] Milliseconds timeOf(const std::string& field) const;
    [[noreturn]] void fail(const std::string& reason) const { refuse(file, start, reason); }

    Input input;
    const std::string& file;
    std::size_t start = 1;  // the line where the record begins
    TimingProfile profile;
};

TimingProfile CsvReader::read() {
    bool isFirst = true;
    skipByteOrderMark();
    while (!input.atEnd()) {
        start = input.line();
        const Fields fields = takeRecord();
        const bool isHeader = isFirst && fields == Fields{"name", "milliseconds"};
        if (!isHeader && fields != Fields{""}) {
            addSample(fields);
        }
        isFirst = false;
    }
    return std::move(profile);
}

void CsvReader::skipByteOrderMark() {
    for (const char byte : {'\xEF', '\xBB', '\xBF'}) {
        if (!skip(byte)) {
            return;
        }
    }
}

CsvReader::Fields CsvReader::takeRecord() {
    Fields fields{takeField()};
    while (!takeLineEnd()) {
        if (!skip(',')) {
            fail("a comma or the line's end must follow a quotation mark that closes");
        }
        if (fields.size() > 1) {
            fail("more than two fields: a line is name,milliseconds");
        }
        fields.push_back(takeField());
    }
    return fields;
}

std::string CsvReader::takeField() {
    if (skip('"')) {
        return takeQuoted();
    }
    std::string field;
    while (!input.atEnd() && input.current() != ',' && input.current() != '\n') {
        if (input.current() == '"') {
            fail("a quotation mark within a field that does not begin with one");
        }
        append(field);
    }
    if (!field.empty() && field.back() == '\r' && (input.atEnd() || input.current() == '\n')) {
        field.pop_back();
    }
    return field;
}

// A quotation mark stands there as two.
std::string CsvReader::takeQuoted() {
    std::string field;
    while (!skip('"') || (!input.atEnd() && input.current() == '"')) {
        if (input.atEnd()) {
            fail("a quotation mark is not closed");
        }
        append(field);
    }
    return field;
}

void CsvReader::append(std::string& field) {
    if (field.size() > 2 * longestName + 4) {
        fail("a field is too long");
    }
    field += input.current();
    input.advance();
}

bool CsvReader::takeLineEnd() {
    skip('\r');
    return input.atEnd() || skip('\n');
}

bool CsvReader::skip(char byte) {
    const bool isThere = !input.atEnd() && input.current() == byte;
    if (isThere) {
        input.advance();
    }
    return isThere;
}

void CsvReader::addSample(const Fields& fields) {
    if (fields.size() != 2) {
        fail("there is no comma: a line is name,milliseconds");
    }
    const Milliseconds time = timeOf(fields[1]);
    profile.samples[nameOf(fields[0])].push_back(time);
}

std::string CsvReader::nameOf(const std::string& field) const {
    std::string name;
    try {
        name = fromFileText(field);
    } catch (const std::invalid_argument& error) {
        fail("the name: " + std::string(error.what()));
    }
    if (name.size() > longestName) {
        fail("the name is longer than " + std::to_string(longestName) + " bytes");
    }
    return name;
}

Milliseconds CsvReader::timeOf(const std::string& field) const {
    Milliseconds::rep whole = 0;
    const char* const end = field.data() + field.size();
    const auto result = std::from_chars(field.data(), end, whole);
    if (result.ec == std::errc() && result.ptr == end) {
        return Milliseconds(whole);
    }
    constexpr double beyond = 9223372036854775808.0;
    double decimal = 0;
    if (!parseSetting(field, decimal) || decimal >= beyond || decimal < -beyond) {
        fail("milliseconds must be a number of at most 64 bits, not " + inQuotes(field));
    }
    return Milliseconds(static_cast<Milliseconds::rep>(decimal));
}

}  // namespace

TimingProfile importCsv(std::istream& stream, const std::string& file) {
    return CsvReader(stream, file).read();
}

}  // namespace lapwing
