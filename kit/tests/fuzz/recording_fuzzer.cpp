// Feeds any bytes to the reader. Only RecordingFileError may leave it, and what it accepts must
// come back the same from a file of its own.

#include "support.h"

#include <cstdint>
#include <cstdlib>

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(data, data + size);
    lapwing::RecordingLimits limits;
    limits.namesPerRecording = 100;
    limits.bytesPerText = 1000;
    std::vector<lapwing::Recording> recordings;
    try {
        recordings = parseInParts(input, 7, limits);
    } catch (const lapwing::RecordingFileError& error) {
        require(error.line() > 0 && error.column() > 0);
        return 0;
    }
    const std::string text = format(recordings);
    require(format(parse(text, limits)) == text);
    return 0;
}
