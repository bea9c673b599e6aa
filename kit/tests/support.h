// What several tests need: recordings, the format as text, and the messages of exceptions.

#ifndef LAPWING_KIT_TESTS_SUPPORT_H
#define LAPWING_KIT_TESTS_SUPPORT_H

#include "recording_format.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

using Durations = std::vector<Milliseconds>;

inline lapwing::Recording recording(const std::string& id, std::int64_t seconds = 0,
                                    const Durations& samples = {Milliseconds(1)}) {
    const std::chrono::system_clock::time_point start;
    return {id, start + std::chrono::seconds(seconds), {}, {{}, {{"Scan", samples}}}};
}

inline std::vector<lapwing::Recording> parse(const std::string& text,
                                             const lapwing::RecordingLimits& limits = {}) {
    std::istringstream stream(text);
    stream.exceptions(std::ios::badbit);
    return lapwing::readRecordings(stream, "runs.json", limits);
}

// Reads at most `atOnce` bytes at a time.
inline std::vector<lapwing::Recording> parseInParts(std::string_view text, std::size_t atOnce,
                                                    const lapwing::RecordingLimits& limits = {}) {
    const auto read = [&](char* buffer, std::size_t size) {
        const std::size_t count = text.copy(buffer, std::min(size, atOnce));
        text.remove_prefix(count);
        return count;
    };
    return lapwing::parseRecordings(read, "runs.json", limits);
}

inline std::string format(const std::vector<lapwing::Recording>& recordings) {
    std::ostringstream stream;
    lapwing::writeRecordings(stream, recordings);
    return stream.str();
}

// The ids, with a space behind each.
inline std::string idsOf(const std::vector<lapwing::Recording>& recordings) {
    std::string ids;
    for (const lapwing::Recording& recording : recordings) {
        ids += recording.id + ' ';
    }
    return ids;
}

template <class Error, class Call>
std::string messageOf(const Call& call) {
    try {
        call();
        return "nothing was thrown";
    } catch (const Error& error) {
        return error.what();
    }
}

// Calls copies of `work` with 0 to 7, each on a thread of its own, and waits for them.
template <class Work>
void onEightThreads(const Work& work) {
    std::vector<std::thread> threads(8);
    int number = 0;
    for (std::thread& thread : threads) {
        thread = std::thread(work, number++);
    }
    std::for_each(threads.begin(), threads.end(), [](std::thread& thread) { thread.join(); });
}

#endif  // LAPWING_KIT_TESTS_SUPPORT_H
