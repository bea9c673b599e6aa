#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <string>

#include "comparisons.h"
#include "processes.h"

namespace {

std::string path = "/bin/true";

void compareRunningAProgram() {
    const auto lapwing = [](benchmark::State& state) {
        comparisons::repeat(state, [] { return command::runProgram({path}).code; });
    };
    const auto floor = [](benchmark::State& state) {
        comparisons::repeat(state, [] {
            pid_t process = 0;
            const std::array<char*, 2> arguments{path.data(), nullptr};
            int status =
                posix_spawn(&process, path.c_str(), nullptr, nullptr, arguments.data(), environ);
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
