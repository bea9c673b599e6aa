#include "line_output.h"

#include <mutex>

#include "handler_lock.h"

namespace lapwing {
namespace {

std::mutex standardError;

}  // namespace

void writeToStandardError(const std::string& line) {
    const std::string text = line + '\n';
    const auto lock = lockForHandler(standardError);
    std::string_view rest = text;
    std::size_t written = 1;
    while (!rest.empty() && written != 0) {
        written = writePartToStandardError(rest);
        rest.remove_prefix(written);
    }
}

}  // namespace lapwing
