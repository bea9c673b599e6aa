#include "this_process.h"

#include <pthread.h>
#include <unistd.h>

#include <array>
#include <fstream>

#ifdef __linux__
#include <sys/syscall.h>
#else
#include <functional>
#include <thread>
#endif

namespace lapwing {

std::uint32_t processId() {
    return static_cast<std::uint32_t>(::getpid());
}

std::uint32_t threadId() {
#ifdef __linux__
    return static_cast<std::uint32_t>(::syscall(SYS_gettid));
#else
    return static_cast<std::uint32_t>(std::hash<std::thread::id>{}(std::this_thread::get_id()));
#endif
}

std::string processName() {
    std::ifstream file("/proc/self/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

std::string threadName() {
    std::array<char, 64> name{};
    const int error = ::pthread_getname_np(::pthread_self(), name.data(), name.size());
    return error == 0 ? name.data() : "";
}

bool otherThreadsWereEnded() {
    return false;
}

}  // namespace lapwing
