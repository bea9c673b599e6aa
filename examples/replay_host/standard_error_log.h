#ifndef REPLAY_HOST_STANDARD_ERROR_LOG_H
#define REPLAY_HOST_STANDARD_ERROR_LOG_H

/// Sends the log lines of the whole process to standard error from its construction to its
/// destruction. A host makes it before everything else that uses the library, on the stack of main.
///
/// Thread safety: any number of threads may send lines meanwhile; each line is written as a whole.
class StandardErrorLog {
public:
    StandardErrorLog();
    StandardErrorLog(const StandardErrorLog&) = delete;
    StandardErrorLog& operator=(const StandardErrorLog&) = delete;
    ~StandardErrorLog();
};

#endif  // REPLAY_HOST_STANDARD_ERROR_LOG_H
