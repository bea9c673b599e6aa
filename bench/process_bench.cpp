#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "comparisons.h"
#include "process.h"

namespace {

char path[] = "/bin/true";

void compareRunningAProgram() {
    const auto lapwing = [](benchmark::State& state) {
        comparisons::repeat(state, [] { return command::runProgram({path}).code; });
    };
    const auto floor = [](benchmark::State& state) {
        comparisons::repeat(state, [] {
            pid_t process = 0;
            char* const arguments[] = {path, nullptr};
            int status = posix_spawn(&process, path, nullptr, nullptr, arguments, environ);
            if (status == 0) {
                waitpid(process, &status, 0);
            }
            return status;
        });
    };
    comparisons::Comparison comparison{"running a program: true", 1.05, lapwing, floor};
    comparison.isWallTime = true;
    comparisons::add(comparison);
}

}  // namespace

void compareProcesses() {
    compareRunningAProgram();
}
