#include "line_output.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace lapwing {
namespace {

// Another program may have made the terminal or pipe that both use non-blocking.
bool canTryAgain() {
    if (errno == EAGAIN) {
        pollfd output{STDERR_FILENO, POLLOUT, 0};
        return ::poll(&output, 1, -1) > 0 || errno == EINTR;
    }
    return errno == EINTR;
}

}  // namespace

std::size_t writePartToStandardError(std::string_view text) {
    for (;;) {
        const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
        if (written >= 0 || !canTryAgain()) {
            return written < 0 ? 0 : static_cast<std::size_t>(written);
        }
    }
}

void writeToDebugger(const std::string& line) {
    writeToStandardError(line);
}

}  // namespace lapwing
