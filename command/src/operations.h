// Recordings by operation, and how their figures are written.

#ifndef LAPWING_COMMAND_OPERATIONS_H
#define LAPWING_COMMAND_OPERATIONS_H

#include <lapwing/kit/recording.h>
#include <lapwing/kit/statistics.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace command {

using Recordings = std::vector<lapwing::Recording>;
using Json = nlohmann::ordered_json;

struct Operation {
    std::size_t recordings = 0;
    std::vector<Milliseconds> samples;
    std::chrono::system_clock::time_point first;
    std::chrono::system_clock::time_point last;
};

// Those that have samples. The recordings are ordered by time.
std::map<std::string, Operation> operationsOf(const Recordings& recordings);

// Returns a profile that has all names of the recordings, to find those that are unknown.
TimingProfile namesOf(const Recordings& recordings);

// The figures of one operation in JSON, in milliseconds.
Json toJson(const std::string& name, std::size_t recordings, const lapwing::Summary& summary);

// As a document of its own.
std::string toText(const Json& json);

// "1 sample", "2 samples".
std::string counted(std::size_t count, const std::string& noun);

}  // namespace command

#endif  // LAPWING_COMMAND_OPERATIONS_H
