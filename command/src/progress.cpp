#include "progress.h"

#include "processes.h"

#include <algorithm>
#include <iostream>

namespace command {
namespace {

std::string roughly(std::chrono::nanoseconds time) {
    using std::chrono::ceil;
    using Minutes = std::chrono::minutes;
    const auto seconds = ceil<std::chrono::seconds>(time);
    return seconds < Minutes(2) ? std::to_string(seconds.count()) + " s"
                                : std::to_string(ceil<Minutes>(time).count()) + " min";
}

}  // namespace

Progress::Progress(std::int64_t allRuns) : runs(allRuns), isShown(allRuns > 1 && isTerminal(2)) {}

Progress::~Progress() {
    show("");
}

void Progress::begin() {
    show(text());
}

void Progress::end(std::chrono::nanoseconds took) {
    ++done;
    last = took;
}

std::string Progress::text() const {
    std::string run = "run " + std::to_string(done + 1) + " of " + std::to_string(runs);
    if (done == 0) {
        return run;
    }
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(last);
    const std::chrono::nanoseconds each = (Clock::now() - started) / done;
    return run + ", last " + std::to_string(milliseconds.count()) + " ms, " +
           roughly(each * (runs - done)) + " left";
}

void Progress::show(const std::string& line) {
    if (isShown) {
        const std::size_t rest = width - std::min(width, line.size());
        std::cerr << '\r' + line + std::string(rest, ' ') + '\r';
        width = line.size();
    }
}

}  // namespace command
