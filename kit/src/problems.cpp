#include <lapwing/kit/problems.h>

#include "line_output.h"

namespace lapwing {

void reportToStandardError(const std::string& problem) {
    writeToStandardError(problem);
}

}  // namespace lapwing
