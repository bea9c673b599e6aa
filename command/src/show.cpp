#include "commands.h"
#include "places.h"

namespace command {

int show(const ShowOptions& /*options*/) {
    throw Failure("not there yet");
}

}  // namespace command
