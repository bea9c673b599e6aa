#include "commands.h"
#include "places.h"

namespace command {

int edit(const EditOptions& /*options*/) {
    throw Failure("not there yet");
}

}  // namespace command
