#include <lapwing/kit/replay.h>

#include "numbers.h"
#include "text_table.h"

#include <algorithm>
#include <numeric>

namespace lapwing {
namespace {

using Nanoseconds = std::chrono::nanoseconds;

Nanoseconds lateBy(const ReplayStep& step) {
    return step.ended - step.target;
}

Nanoseconds paddedBy(const ReplayStep& step) {
    return std::max(step.target - step.work, Nanoseconds::zero());
}

template <class Time>
std::string formatMean(const std::vector<ReplayStep>& steps, Time timeOf) {
    using Sum = std::chrono::duration<double, std::milli>;
    if (steps.empty()) {
        return "-";
    }
    const Sum sum =
        std::accumulate(steps.begin(), steps.end(), Sum::zero(),
                        [&](Sum total, const ReplayStep& step) { return total + timeOf(step); });
    return formatTime(sum / static_cast<double>(steps.size()), 1);
}

std::string formatNote(const ReplayedOperation& operation) {
    const std::string note = onOneLine(operation.note);
    if (!operation.recorded) {
        return note.empty() ? "no recorded samples" : "no recorded samples; " + note;
    }
    return operation.steps.empty() && note.empty() ? "never called" : note;
}

Row makeRow(const std::string& name, const ReplayedOperation& operation) {
    const auto lateness = operation.lateness();
    const auto late = [&](Nanoseconds Lateness::*figure) {
        return lateness ? formatTime((*lateness).*figure, 3) : "-";
    };
    return {onOneLine(name),
            std::to_string(operation.steps.size()),
            operation.recorded ? std::to_string(operation.recorded->count()) + " ms" : "-",
            formatMean(operation.steps, [](const ReplayStep& step) { return step.work; }),
            formatMean(operation.steps, paddedBy),
            formatMean(operation.steps, [](const ReplayStep& step) { return step.ended; }),
            late(&Lateness::p50),
            late(&Lateness::p99),
            late(&Lateness::worst),
            std::to_string(operation.overruns()),
            formatNote(operation)};
}

}  // namespace

std::size_t ReplayedOperation::overruns() const {
    if (!recorded) {
        return 0;
    }
    return static_cast<std::size_t>(
        std::count_if(steps.begin(), steps.end(), [](const ReplayStep& step) {
            return std::chrono::floor<Milliseconds>(step.work) > step.target;
        }));
}

std::size_t ReplayedOperation::callsWithoutData() const {
    return recorded ? 0 : steps.size();
}

std::optional<Lateness> ReplayedOperation::lateness() const {
    if (steps.empty() || !recorded) {
        return std::nullopt;
    }
    std::vector<Nanoseconds> all;
    all.reserve(steps.size());
    for (const ReplayStep& step : steps) {
        all.push_back(lateBy(step));
    }
    std::sort(all.begin(), all.end());
    return Lateness{all[rankOf(50, all.size()) - 1], all[rankOf(99, all.size()) - 1], all.back()};
}

std::string formatReport(const ReplayReport& report) {
    const std::vector<Column> columns{{"operation", Align::Left},
                                      {"runs"},
                                      {"recorded"},
                                      {"work"},
                                      {"padded"},
                                      {"final"},
                                      {"late p50"},
                                      {"late p99"},
                                      {"late worst"},
                                      {"overruns"},
                                      {"note", Align::Left}};
    std::vector<Row> rows;
    for (const auto& [name, operation] : report.operations) {
        rows.push_back(makeRow(name, operation));
    }
    return formatTable(columns, rows);
}

}  // namespace lapwing
