#include "commands.h"
#include "places.h"
#include "store.h"
#include "store_url.h"

namespace command {

int pull(const PullOptions& options) {
    if (!isStoreUrl(options.url)) {
        throw Failure(options.url + ": not a URL such as postgresql://server/database");
    }
    save(options.output, pullRecordings(options.url));
    return 0;
}

}  // namespace command
