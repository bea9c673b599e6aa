// PostgreSQL's binary form of values, and of the rows that COPY reads.

#ifndef LAPWING_COMMAND_POSTGRES_BINARY_H
#define LAPWING_COMMAND_POSTGRES_BINARY_H

#include <lapwing/instrumentation.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace command {

using Seconds = std::chrono::time_point<std::chrono::system_clock, std::chrono::seconds>;

// Makes rows, and passes them on in large blocks.
class PostgresRows {
public:
    using Write = std::function<void(std::string_view bytes)>;
    PostgresRows(const Write& writeBytes, int columnCount);

    // A row is `columnCount` of these.
    PostgresRows& text(std::string_view bytes);  // text or bytea
    PostgresRows& null();
    PostgresRows& time(Seconds time);
    PostgresRows& jsonb(std::string_view json);
    PostgresRows& bigints(const std::vector<Milliseconds>& numbers);

    // Comes behind the last row.
    void finish();

private:
    void startField(std::size_t size);
    void startValue();
    void flush();

    const Write& write;
    int columns;
    int column = 0;
    std::string block;
};

// These throw std::invalid_argument for what is not the value that they name.
Seconds readTime(std::string_view value);
std::string_view readJsonb(std::string_view value);
std::vector<Milliseconds> readBigints(std::string_view value);

// The texts as a text that stands for an array.
std::string arrayText(const std::vector<std::string>& texts);

// The bytes as a text that stands for a bytea.
std::string bytesText(std::string_view bytes);

}  // namespace command

#endif  // LAPWING_COMMAND_POSTGRES_BINARY_H
