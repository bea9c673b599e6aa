// Sends the lines through a logger of spdlog, with its levels, patterns and files.

#include <lapwing/instrumentation.h>

#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <memory>
#include <string>
#include <utility>

namespace {

LogMessageHandler logToSpdlog(std::shared_ptr<spdlog::logger> logger) {
    return [logger = std::move(logger)](const std::string& line) {
        logger->info("{}", line);  // as an argument: names may have braces
    };
}

}  // namespace

int main() {
    const auto logger = spdlog::stdout_logger_mt("host");
    logger->set_pattern("[%n] [%l] %v");
    Instrumentation::setGlobalLogMessageHandler(logToSpdlog(logger));
    {
        Instrumentation scan("Scan {}");
        scan.lap("files");
    }
    Instrumentation::setGlobalLogMessageHandler({});
}
