#include "commands.h"
#include "places.h"

namespace command {

int record(const RecordOptions& /*options*/) {
    throw Failure("not there yet");
}

}  // namespace command
