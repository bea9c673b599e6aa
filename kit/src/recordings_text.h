// What pages say about recordings.

#ifndef LAPWING_KIT_SRC_RECORDINGS_TEXT_H
#define LAPWING_KIT_SRC_RECORDINGS_TEXT_H

#include <lapwing/kit/recording.h>

#include <string>
#include <vector>

namespace lapwing {

// Returns, as markup, the first and the last of their times, in UTC. There must be one.
std::string datesOf(const std::vector<const Recording*>& recordings);

// Returns, as markup, how many there are, from when, and which labels all of them share.
std::string describe(const std::vector<Recording>& recordings);

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_RECORDINGS_TEXT_H
