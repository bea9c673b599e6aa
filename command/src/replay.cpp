#include "commands.h"
#include "places.h"

namespace command {

int replay(const ReplayOptions& /*options*/) {
    throw Failure("not there yet");
}

}  // namespace command
