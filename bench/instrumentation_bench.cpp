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

const std::string label = "textures decoded";

// A name as hosts have them: with it, no line fits the buffer inside a string.
std::string name() {
    return "SceneLoader::load";
}

template <class Scope>
void sendNothing(benchmark::State& state, bool enabled) {
    comparisons::repeat(state, [&] { const Scope scope(name(), enabled, {}); });
}

template <class Scope>
void sendFourLines(benchmark::State& state) {
    const LogMessageHandler handler = [](const std::string& line) {
        benchmark::DoNotOptimize(line.data());
    };
    comparisons::repeat(state, [&] {
        Scope scope(name(), true, handler);
        scope.lap(label);
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

void logFourLines(spdlog::logger& log, const std::string& object) {
    log.info("{:{}}{}: Begin", "", 0, object);
    const Clock::time_point start = Clock::now();
    log.info("{:{}}{}: {} - {} ms", "", 2, object, label, millisecondsSince(start));
    const Clock::time_point lap = Clock::now();
    log.info("{:{}}{}: Final Lap - {} ms", "", 2, object, millisecondsSince(lap));
    log.info("{:{}}{}: End - {} ms", "", 0, object, millisecondsSince(start));
}
#endif

comparisons::Body logThroughSpdlog() {
#if defined(LAPWING_BENCH_SPDLOG)
    return [](benchmark::State& state) {
        spdlog::logger log("bench", std::make_shared<spdlog::sinks::null_sink_mt>());
        comparisons::repeat(state, [&] { logFourLines(log, name()); });
    };
#else
    return {};
#endif
}

}  // namespace

void compareInstrumentation() {
    using comparisons::add;
    const std::string quiet =
        "the name taken over, a count up and down, two clock reads, a look for a handler at each "
        "end; a call to construct and one to destroy";
    for (const bool enabled : {false, true}) {
        add({enabled ? "scope that sends nothing: no handler"
                     : "scope that sends nothing: disabled",
             quiet,
             1.10,
             [=](auto& state) { sendNothing<Instrumentation>(state, enabled); },
             [=](auto& state) { sendNothing<floors::Scope>(state, enabled); },
             {{"Boost.Timer cpu_timer", 10, runCpuTimer()}}});
    }
    add({"scope with a lap: four lines",
         "as above and two clock reads more; for each line a copy of the handler, one "
         "allocation of the exact size, each piece of text copied once into it, a call of the "
         "handler",
         1.25,
         sendFourLines<Instrumentation>,
         sendFourLines<floors::Scope>,
         {{"spdlog, null sink", 1.2, logThroughSpdlog()}}});
}
