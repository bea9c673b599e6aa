#ifndef REPLAY_HOST_USAGE_ERROR_H
#define REPLAY_HOST_USAGE_ERROR_H

#include <stdexcept>

/// What the user asked for cannot be done; the text says why. The host ends with exit code 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

#endif  // REPLAY_HOST_USAGE_ERROR_H
