// The command line.

#ifndef LAPWING_COMMAND_ARGUMENTS_H
#define LAPWING_COMMAND_ARGUMENTS_H

#include <string>
#include <vector>

namespace command {

// Runs the command that the arguments behind the program's name ask for, and returns its exit code.
// Throws Failure if they are wrong.
int runArguments(const std::vector<std::string>& arguments);

}  // namespace command

#endif  // LAPWING_COMMAND_ARGUMENTS_H
