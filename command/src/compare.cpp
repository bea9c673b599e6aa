#include "commands.h"
#include "places.h"

namespace command {

int compare(const CompareOptions& /*options*/) {
    throw Failure("not there yet");
}

}  // namespace command
