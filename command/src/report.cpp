#include "commands.h"
#include "places.h"

namespace command {

int report(const ReportOptions& /*options*/) {
    throw Failure("not there yet");
}

}  // namespace command
