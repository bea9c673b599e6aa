// What another process saves in turn.

#ifndef LAPWING_KIT_TESTS_OTHER_PROCESS_H
#define LAPWING_KIT_TESTS_OTHER_PROCESS_H

#include <lapwing/kit/recording_file.h>

inline std::vector<lapwing::Recording> recordingsOf(std::size_t samples) {
    return {{"id", {}, {}, {{}, {{"Scan", std::vector<Milliseconds>(samples)}}}}};
}

constexpr std::size_t few = 1;
constexpr std::size_t many = 50'000;

#endif  // LAPWING_KIT_TESTS_OTHER_PROCESS_H
