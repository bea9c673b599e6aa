#include "commands.h"
#include "places.h"

namespace command {

int importSamples(const ImportOptions& /*options*/) {
    throw Failure("not there yet");
}

}  // namespace command
