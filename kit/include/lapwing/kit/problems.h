/// @file
/// Problems: what went wrong where nobody can be told by an exception.

#ifndef LAPWING_KIT_PROBLEMS_H
#define LAPWING_KIT_PROBLEMS_H

#include <functional>
#include <string>

namespace lapwing {

/// Receives one problem as a line without a terminator, in UTF-8. If it is empty, problems are
/// dropped. It is called on the thread that met the problem, with no lock held, and on several
/// threads at once if they meet problems at once. Its exceptions propagate to that thread's caller.
using ProblemHandler = std::function<void(const std::string& problem)>;

/// Writes `problem` to standard error as one line, in one piece. Failures are ignored. Any number
/// of threads may call it at once.
void reportToStandardError(const std::string& problem);

}  // namespace lapwing

#endif  // LAPWING_KIT_PROBLEMS_H
