#include "commands.h"
#include "places.h"

namespace command {

int merge(const MergeOptions& options) {
    save(options.output, load(options.places));
    return 0;
}

}  // namespace command
