// How far the runs are, for people who wait.

#ifndef LAPWING_COMMAND_PROGRESS_H
#define LAPWING_COMMAND_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace command {

// A line on standard error if that is a terminal and there is more than one run. It is erased in
// the end. Meanwhile the cursor stands at its start, where the output of the runs begins.
class Progress {
public:
    explicit Progress(std::int64_t runs);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void begin();
    void end(std::chrono::nanoseconds took);

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] std::string text() const;
    void show(const std::string& line);

    std::int64_t runs;
    std::int64_t done = 0;
    bool isShown;
    Clock::time_point started = Clock::now();
    std::chrono::nanoseconds last{};
    std::size_t width = 0;
};

}  // namespace command

#endif  // LAPWING_COMMAND_PROGRESS_H
