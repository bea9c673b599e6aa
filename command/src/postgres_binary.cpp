#include "postgres_binary.h"

#include "hex.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <type_traits>

namespace command {
namespace {

constexpr std::size_t blockSize = 256U << 10U;
constexpr std::size_t longestField = std::numeric_limits<std::int32_t>::max();
constexpr char jsonbVersion = 1;
constexpr std::int32_t bigintType = 20;
constexpr std::int64_t microseconds = 1'000'000;
constexpr std::int64_t epoch = 946'684'800;  // 2000-01-01, where their times begin
constexpr std::string_view signature("PGCOPY\n\377\r\n\0\0\0\0\0\0\0\0\0", 19);

[[noreturn]] void refuse(const char* reason) {
    throw std::invalid_argument(reason);
}

template <class Integer>
void append(std::string& bytes, Integer number) {
    const auto value = static_cast<std::make_unsigned_t<Integer>>(number);
    for (std::size_t shift = 8 * sizeof value; shift != 0; shift -= 8) {
        bytes += static_cast<char>(value >> (shift - 8U) & 0xFFU);
    }
}

// Takes the number off the start.
template <class Integer>
Integer take(std::string_view& bytes) {
    std::make_unsigned_t<Integer> value = 0;
    if (bytes.size() < sizeof value) {
        refuse("a value is cut short");
    }
    for (std::size_t i = 0; i < sizeof value; ++i) {
        value = static_cast<decltype(value)>(value << 8U) | static_cast<unsigned char>(bytes[i]);
    }
    bytes.remove_prefix(sizeof value);
    return static_cast<Integer>(value);
}

// An array begins with the number of dimensions, whether there are nulls, and the type, and each
// dimension with its length and the index of its first element.
constexpr std::size_t sizeOfArray = 3 * sizeof(std::int32_t);
constexpr std::size_t sizeOfDimension = 2 * sizeof(std::int32_t);
constexpr std::size_t sizeOfElement = sizeof(std::int32_t) + sizeof(std::int64_t);

}  // namespace

PostgresRows::PostgresRows(const Write& writeBytes, int columnCount)
    : write(writeBytes), columns(columnCount), block(signature) {}

PostgresRows& PostgresRows::text(std::string_view bytes) {
    startField(bytes.size());
    block += bytes;
    return *this;
}

PostgresRows& PostgresRows::null() {
    startValue();
    append(block, std::int32_t{-1});
    return *this;
}

PostgresRows& PostgresRows::time(Seconds time) {
    startField(sizeof(std::int64_t));
    append(block, (std::int64_t{time.time_since_epoch().count()} - epoch) * microseconds);
    return *this;
}

PostgresRows& PostgresRows::jsonb(std::string_view json) {
    startField(json.size() + 1);
    block += jsonbVersion;
    block += json;
    return *this;
}

PostgresRows& PostgresRows::bigints(const std::vector<Milliseconds>& numbers) {
    const bool isEmpty = numbers.empty();
    startField(sizeOfArray + (isEmpty ? 0 : sizeOfDimension + numbers.size() * sizeOfElement));
    append(block, std::int32_t{isEmpty ? 0 : 1});
    append(block, std::int32_t{0});
    append(block, bigintType);
    if (!isEmpty) {
        append(block, static_cast<std::int32_t>(numbers.size()));
        append(block, std::int32_t{1});
    }
    for (const Milliseconds number : numbers) {
        append(block, std::int32_t{sizeof(std::int64_t)});
        append(block, std::int64_t{number.count()});
        if (block.size() >= blockSize) {
            flush();
        }
    }
    return *this;
}

void PostgresRows::finish() {
    append(block, std::int16_t{-1});
    flush();
}

void PostgresRows::startField(std::size_t size) {
    if (size > longestField) {
        refuse("a value is too large for the database");
    }
    startValue();
    append(block, static_cast<std::int32_t>(size));
}

void PostgresRows::startValue() {
    if (block.size() >= blockSize) {
        flush();
    }
    if (column == 0) {
        append(block, static_cast<std::int16_t>(columns));
    }
    column = (column + 1) % columns;
}

void PostgresRows::flush() {
    write(block);
    block.clear();
}

Seconds readTime(std::string_view value) {
    const auto sinceEpoch = take<std::int64_t>(value);
    const std::int64_t seconds =
        sinceEpoch / microseconds - (sinceEpoch % microseconds < 0 ? 1 : 0);
    return Seconds(std::chrono::seconds(seconds + epoch));
}

std::string_view readJsonb(std::string_view value) {
    if (value.empty() || value.front() != jsonbVersion) {
        refuse("this version of jsonb is unknown");
    }
    return value.substr(1);
}

std::vector<Milliseconds> readBigints(std::string_view value) {
    const auto dimensions = take<std::int32_t>(value);
    const auto nulls = take<std::int32_t>(value);
    if (dimensions < 0 || dimensions > 1 || nulls != 0 || take<std::int32_t>(value) != bigintType) {
        refuse("samples are an array of numbers");
    }
    std::vector<Milliseconds> numbers;
    if (dimensions == 1) {
        value.remove_prefix(std::min(value.size(), sizeOfDimension));
        numbers.reserve(value.size() / sizeOfElement);
    }
    while (!value.empty()) {
        static_cast<void>(take<std::int32_t>(value));
        numbers.emplace_back(take<std::int64_t>(value));
    }
    return numbers;
}

std::string arrayText(const std::vector<std::string>& texts) {
    std::string array = "{";
    for (const std::string& text : texts) {
        array += array.size() == 1 ? "\"" : ",\"";
        for (const char character : text) {
            array += character == '"' || character == '\\' ? "\\" : "";
            array += character;
        }
        array += '"';
    }
    return array + '}';
}

std::string bytesText(std::string_view bytes) {
    return "\\x" + toHex(bytes);
}

}  // namespace command
