#include "environment.h"

#include <unistd.h>

namespace lapwing {

std::vector<std::string> environmentVariables() {
    std::vector<std::string> variables;
    for (char* const* variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        variables.emplace_back(*variable);
    }
    return variables;
}

}  // namespace lapwing
