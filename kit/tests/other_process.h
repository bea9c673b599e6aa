// What another process saves in turn.

#ifndef LAPWING_KIT_TESTS_OTHER_PROCESS_H
#define LAPWING_KIT_TESTS_OTHER_PROCESS_H

#include <lapwing/kit/recording_file.h>

inline std::vector<lapwing::Recording> smallRecordings() {
    return {{"small", {}, {}, {{}, {{"Scan", {Milliseconds(120)}}}}}};
}

inline std::vector<lapwing::Recording> largeRecordings() {
    return {
        {"large", {}, {}, {{}, {{"Scan", std::vector<Milliseconds>(50'000, Milliseconds(7))}}}}};
}

#endif  // LAPWING_KIT_TESTS_OTHER_PROCESS_H
