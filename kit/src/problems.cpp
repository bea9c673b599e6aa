#include <lapwing/kit/problems.h>

#include <cstdio>

namespace lapwing {

void reportToStandardError(const std::string& problem) {
    const std::string line = problem + '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace lapwing
