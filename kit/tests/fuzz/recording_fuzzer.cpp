// Feeds any bytes to the reader. Only RecordingFileError may leave it, and what it accepts must
// come back the same from a file of its own.

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "recording_format.h"

namespace {

std::vector<lapwing::Recording> parse(std::string_view text, std::size_t atOnce) {
    const auto read = [&](char* buffer, std::size_t size) {
        const std::size_t count = text.copy(buffer, std::min(size, atOnce));
        text.remove_prefix(count);
        return count;
    };
    lapwing::RecordingLimits limits;
    limits.namesPerRecording = 100;
    limits.bytesPerText = 1000;
    return lapwing::parseRecordings(read, "fuzz", limits);
}

std::string format(const std::vector<lapwing::Recording>& recordings) {
    std::string text;
    lapwing::formatRecordings(recordings, [&](std::string_view bytes) { text += bytes; });
    return text;
}

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(data, data + size);
    std::vector<lapwing::Recording> recordings;
    try {
        recordings = parse(input, 7);
    } catch (const lapwing::RecordingFileError& error) {
        require(error.line() > 0 && error.column() > 0);
        return 0;
    }
    const std::string text = format(recordings);
    require(format(parse(text, text.size())) == text);
    return 0;
}
