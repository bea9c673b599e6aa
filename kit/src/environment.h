// The variables of the process's environment.

#ifndef LAPWING_KIT_SRC_ENVIRONMENT_H
#define LAPWING_KIT_SRC_ENVIRONMENT_H

#include <string>
#include <vector>

namespace lapwing {

// Each as NAME=VALUE; on Windows in UTF-8.
std::vector<std::string> environmentVariables();

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_ENVIRONMENT_H
