// The format of a file of recordings: JSON, one recording after the other.

#ifndef LAPWING_KIT_SRC_RECORDING_FORMAT_H
#define LAPWING_KIT_SRC_RECORDING_FORMAT_H

#include <lapwing/kit/recording_file.h>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace lapwing {

// Fills `buffer` with up to `size` bytes and returns how many; 0 at the end.
using ReadBytes = std::function<std::size_t(char* buffer, std::size_t size)>;

// Takes the next bytes, in large blocks.
using WriteBytes = std::function<void(std::string_view bytes)>;

// What counts towards the limits before a file is read.
struct Counted {
    std::size_t recordings = 0;
    std::size_t samples = 0;
};

// Throws RecordingFileError, which names `file`, for what the format does not allow.
std::vector<Recording> parseRecordings(const ReadBytes& read, const std::string& file,
                                       const RecordingLimits& limits, const Counted& counted = {});

// Throws std::invalid_argument for what the format cannot hold, before it writes anything.
void formatRecordings(const std::vector<Recording>& recordings, const WriteBytes& write);

// Says what is wrong with an id; empty if nothing is.
std::string problemOfId(std::string_view id);

// The text in quotation marks for a message: shortened, on one line, and UTF-8 whatever it holds.
std::string inQuotes(std::string_view text);

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_RECORDING_FORMAT_H
