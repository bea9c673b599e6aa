// What all imports read.

#ifndef LAPWING_KIT_SRC_IMPORT_INPUT_H
#define LAPWING_KIT_SRC_IMPORT_INPUT_H

#include <lapwing/kit/import.h>
#include <lapwing/kit/recording_file.h>

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>
#include <vector>

namespace lapwing {

// Files hold no longer one.
inline constexpr std::size_t longestName = RecordingLimits{}.bytesPerText;

// The bytes of a stream, and in which line the current one is.
class Input {
public:
    explicit Input(std::istream& istream) : stream(istream) {}

    bool atEnd() { return next == end && !refill(); }
    [[nodiscard]] char current() const { return *next; }
    void advance() {
        lineNumber += *next == '\n' ? 1 : 0;
        ++count;
        ++next;
    }
    [[nodiscard]] std::size_t line() const { return lineNumber; }
    [[nodiscard]] std::uint64_t position() const { return count; }

private:
    bool refill() {
        stream.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        next = buffer.data();
        end = next + stream.gcount();
        return next != end;
    }

    std::istream& stream;
    std::vector<char> buffer = std::vector<char>(64U << 10U);
    const char* next = buffer.data();
    const char* end = buffer.data();
    std::size_t lineNumber = 1;
    std::uint64_t count = 0;
};

// Throws ImportError.
[[noreturn]] inline void refuse(const std::string& file, std::size_t line,
                                const std::string& reason) {
    throw ImportError(file + ':' + std::to_string(line) + ": " + reason);
}

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_IMPORT_INPUT_H
