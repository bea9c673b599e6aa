#include "processes.h"

#include "recording_format.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace command {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int notFound = 127;
constexpr int notExecutable = 126;

std::atomic<pid_t> running{0};
std::atomic<int> received{0};
static_assert(std::atomic<int>::is_always_lock_free);

// What a program is started with instead of the caller's input and output.
class Redirections {
public:
    explicit Redirections(Output output) {
        check(posix_spawn_file_actions_init(&actions));
        redirect(STDIN_FILENO, O_RDONLY);
        redirect(STDOUT_FILENO, O_WRONLY);
        if (output == Output::None) {
            redirect(STDERR_FILENO, O_WRONLY);
        }
    }

    Redirections(const Redirections&) = delete;
    Redirections& operator=(const Redirections&) = delete;
    ~Redirections() { posix_spawn_file_actions_destroy(&actions); }

    [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions; }

private:
    static void check(int error) {
        if (error != 0) {
            throw std::system_error(error, std::generic_category());
        }
    }

    void redirect(int stream, int access) {
        check(posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", access, 0));
    }

    posix_spawn_file_actions_t actions{};
};

[[noreturn]] void refuse(const std::string& program, int error) {
    const std::error_code reason(error, std::generic_category());
    const std::string message = "cannot run " + lapwing::inQuotes(program);
    if (error == EAGAIN || error == ENOMEM) {
        throw std::system_error(reason, message);
    }
    throw Stop(message + ": " + reason.message(), error == ENOENT ? notFound : notExecutable);
}

pid_t start(const std::vector<char*>& arguments, const posix_spawn_file_actions_t* redirections) {
    pid_t process = 0;
    const char* const program = arguments.front();
    const int error =
        posix_spawnp(&process, program, redirections, nullptr, arguments.data(), environ);
    if (error != 0) {
        refuse(program, error);
    }
    running = process;
    if (received != 0) {
        kill(process, received);
    }
    return process;
}

// The process is not reaped yet, so that no other one has its number.
void awaitEnd(pid_t process) {
    siginfo_t end{};
    while (waitid(P_PID, static_cast<id_t>(process), &end, WEXITED | WNOWAIT) != 0) {
        if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "cannot wait for a program");
        }
    }
}

Ending reap(pid_t process) {
    running = 0;
    int status = 0;
    waitpid(process, &status, 0);
    Ending ending;
    if (WIFSIGNALED(status)) {
        ending.signal = WTERMSIG(status);
    } else {
        ending.code = WEXITSTATUS(status);
    }
    return ending;
}

Ending run(const std::vector<std::string>& program, const Redirections* redirections) {
    std::vector<char*> arguments;
    arguments.reserve(program.size() + 1);
    for (const std::string& argument : program) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    const auto* const actions = redirections == nullptr ? nullptr : redirections->get();
    const Clock::time_point started = Clock::now();
    const pid_t process = start(arguments, actions);
    awaitEnd(process);
    const Clock::time_point ended = Clock::now();
    Ending ending = reap(process);
    ending.took = ended - started;
    return ending;
}

// What a terminal sends goes to all programs of its foreground group.
bool hasReached(pid_t process, const siginfo_t& info) {
    const bool isFromProcess = info.si_code <= 0;
    return !isFromProcess && getpgid(process) == getpgrp();
}

extern "C" void takeSignal(int signal, siginfo_t* info, void* /*context*/) {
    const int error = errno;
    received = signal;
    const pid_t process = running;
    if (process != 0 && !hasReached(process, *info)) {
        kill(process, signal);
    }
    errno = error;
}

struct Taken {
    int signal;
    struct sigaction before;
};

std::array<Taken, 3> taken{{{SIGINT, {}}, {SIGTERM, {}}, {SIGHUP, {}}}};

// Programs are not started with handlers of their caller, but do ignore what it ignores. Some
// callers ignore the ends of their children, who could then not be waited for.
void takeSignals() {
    struct sigaction action {};
    action.sa_sigaction = takeSignal;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    for (Taken& one : taken) {
        sigaction(one.signal, nullptr, &one.before);
        if (one.before.sa_handler != SIG_IGN) {
            sigaction(one.signal, &action, nullptr);
        }
    }
    std::signal(SIGCHLD, SIG_DFL);
}

}  // namespace

Ending runProgram(const std::vector<std::string>& program) {
    return run(program, nullptr);
}

Ending runLine(const std::string& line, Output output) {
    const Redirections redirections(output);
    return run({"/bin/sh", "-c", line}, &redirections);
}

Interruption::Interruption() {
    received = 0;
    takeSignals();
}

Interruption::~Interruption() {
    for (const Taken& one : taken) {
        sigaction(one.signal, &one.before, nullptr);
    }
}

int Interruption::signal() {
    return received;
}

bool isTerminal(int stream) {
    return isatty(stream) == 1;
}

std::string hostName() {
    std::array<char, 256> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : std::string();
}

}  // namespace command
