// Recordings and replays to make pages of, always the same ones.

#ifndef LAPWING_KIT_TESTS_PAGE_SAMPLES_H
#define LAPWING_KIT_TESTS_PAGE_SAMPLES_H

#include <lapwing/kit/recording.h>
#include <lapwing/kit/replay.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

using Recordings = std::vector<lapwing::Recording>;

inline const std::string strangeNames[] = {"<script>alert('x')</script>",
                                           "a\n\tb\x1b[31m\xC2\x85",
                                           "\xFF\xFEhex",
                                           "",
                                           std::string(300, 'W'),
                                           "a \"quoted\" & 'named' thing -->",
                                           std::string("\xE2\x80") + "\xAE right to left",
                                           "]]></style></title>"};

// Mostly near `typical`, with a tail.
inline std::vector<Milliseconds> samplesNear(std::mt19937& random, std::int64_t typical,
                                             std::size_t count) {
    std::vector<Milliseconds> samples;
    for (std::size_t i = 0; i < count; ++i) {
        std::int64_t extra = 0;
        for (int draw = 0; draw < 4; ++draw) {
            extra += static_cast<std::int64_t>(random() % static_cast<std::uint32_t>(typical));
        }
        samples.emplace_back(typical / 2 + extra / 4 + (random() % 40 == 0 ? extra : 0));
    }
    return samples;
}

// A recording for each hour and a half, with samples of each of the operations.
inline Recordings recordingsOf(const std::vector<std::pair<std::string, std::int64_t>>& operations,
                               std::size_t count, std::size_t samplesEach, std::uint32_t seed = 1) {
    std::mt19937 random(seed);
    Recordings recordings;
    for (std::size_t i = 0; i < count; ++i) {
        lapwing::Recording recording;
        recording.id = "r" + std::to_string(100000 + i);
        recording.recorded = std::chrono::system_clock::time_point() +
                             std::chrono::seconds(1'793'000'000 + 5400 * i);
        recording.labels = {{"build", i < count / 2 ? "41" : "42"},
                            {"machine", i % 3 == 0 ? "bench-3" : "laptop"},
                            {"system", "linux"}};
        for (const auto& [name, typical] : operations) {
            const std::int64_t own = i % 3 == 0 ? typical : typical * 5 / 4;
            recording.profile.samples[name] = samplesNear(random, own, samplesEach);
        }
        recordings.push_back(recording);
    }
    return recordings;
}

inline lapwing::ReplayStep step(std::int64_t target, std::int64_t workMicroseconds,
                                std::int64_t lateMicroseconds) {
    const std::chrono::microseconds work(workMicroseconds);
    const std::chrono::microseconds padded = std::chrono::milliseconds(target);
    return {Milliseconds(target), work,
            std::max(work, padded) + std::chrono::microseconds(lateMicroseconds)};
}

inline lapwing::ReplayedOperation replayed(std::int64_t target, std::int64_t workMicroseconds,
                                           std::size_t calls, std::uint32_t seed) {
    std::mt19937 random(seed);
    lapwing::ReplayedOperation operation{Milliseconds(target), {}, {}};
    for (std::size_t i = 0; i < calls; ++i) {
        const auto draw = [&](std::int64_t end) {
            return static_cast<std::int64_t>(random()) % end;
        };
        const std::int64_t work = workMicroseconds / 2 + draw(workMicroseconds + 1);
        std::int64_t late = 20 + draw(60);
        late += i % 30 == 0 ? draw(900) : 0;
        operation.steps.push_back(step(target, work, late));
    }
    return operation;
}

#endif  // LAPWING_KIT_TESTS_PAGE_SAMPLES_H
