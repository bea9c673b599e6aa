#include <lapwing/instrumentation.h>

#include "comparisons.h"
#include "floors.h"

#if defined(LAPWING_BENCH_BOOST_TIMER)
#include <boost/timer/timer.hpp>
#endif
#if defined(LAPWING_BENCH_SPDLOG)
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>
#endif

namespace {

struct Texts {
    std::string name;
    std::string label;
};
// With the long name, no line fits the buffer inside a string. With the short one, "Begin" does.
const Texts longTexts{"SceneLoader::load", "textures decoded"};
const Texts shortTexts{"Load", "decoded"};

template <class Scope>
void sendNothing(benchmark::State& state, bool enabled) {
    comparisons::repeat(state, [&] { const Scope scope(longTexts.name, enabled, {}); });
}

template <class Scope>
void sendFourLines(benchmark::State& state, const Texts& texts) {
    const LogMessageHandler handler = [](const std::string& line) {
        benchmark::DoNotOptimize(line.data());
    };
    comparisons::repeat(state, [&] {
        Scope scope(texts.name, true, handler);
        scope.lap(texts.label);
    });
}

comparisons::Body runCpuTimer() {
#if defined(LAPWING_BENCH_BOOST_TIMER)
    return [](benchmark::State& state) {
        comparisons::repeat(state, [] {
            boost::timer::cpu_timer timer;
            timer.stop();
            return timer.elapsed().wall;
        });
    };
#else
    return {};
#endif
}

#if defined(LAPWING_BENCH_SPDLOG)
using Clock = std::chrono::steady_clock;

long long millisecondsSince(Clock::time_point then) {
    return std::chrono::duration_cast<Milliseconds>(Clock::now() - then).count();
}

void logFourLines(spdlog::logger& log, const std::string& object, const std::string& label) {
    log.info("{:{}}{}: Begin", "", 0, object);
    const Clock::time_point start = Clock::now();
    log.info("{:{}}{}: {} - {} ms", "", 2, object, label, millisecondsSince(start));
    const Clock::time_point lap = Clock::now();
    log.info("{:{}}{}: Final Lap - {} ms", "", 2, object, millisecondsSince(lap));
    log.info("{:{}}{}: End - {} ms", "", 0, object, millisecondsSince(start));
}
#endif

comparisons::Body logThroughSpdlog([[maybe_unused]] const Texts& texts) {
#if defined(LAPWING_BENCH_SPDLOG)
    return [&](benchmark::State& state) {
        spdlog::logger log("bench", std::make_shared<spdlog::sinks::null_sink_mt>());
        comparisons::repeat(state,
                            [&] { logFourLines(log, std::string(texts.name), texts.label); });
    };
#else
    return {};
#endif
}

void compareFourLines(const std::string& variant, const Texts& texts, double timesSpdlog) {
    comparisons::add({"scope with a lap: four lines, " + variant,
                      1.10,
                      [&](auto& state) { sendFourLines<Instrumentation>(state, texts); },
                      [&](auto& state) { sendFourLines<floors::Scope>(state, texts); },
                      {{"spdlog, null sink", timesSpdlog, logThroughSpdlog(texts)}}});
}

}  // namespace

void compareInstrumentation() {
    for (const bool enabled : {false, true}) {
        comparisons::add(
            {std::string("scope that sends nothing: ") + (enabled ? "no handler" : "disabled"),
             1.10,
             [=](auto& state) { sendNothing<Instrumentation>(state, enabled); },
             [=](auto& state) { sendNothing<floors::Scope>(state, enabled); },
             {{"Boost.Timer cpu_timer", 5, runCpuTimer()}}});
    }
    compareFourLines("long names", longTexts, 1.5);
    compareFourLines("short names", shortTexts, 1.5);
}
