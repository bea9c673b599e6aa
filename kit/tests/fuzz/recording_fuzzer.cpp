// Feeds any bytes to the reader. Only RecordingFileError may leave it, and what it accepts must
// come back the same from a file of its own.

#include "../support.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    lapwing::RecordingLimits limits;
    limits.namesPerRecording = 100;
    limits.bytesPerText = 1000;
    std::string text;
    try {
        text = format(parseInParts(std::string(data, data + size), 7, limits));
    } catch (const lapwing::RecordingFileError&) {
        return 0;
    }
    if (format(parse(text, limits)) != text) {
        std::abort();
    }
    return 0;
}
