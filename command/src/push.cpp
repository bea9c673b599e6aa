#include "commands.h"
#include "places.h"
#include "store.h"
#include "store_url.h"

namespace command {

int push(const PushOptions& options) {
    const bool isPushing = options.create || !options.places.empty();
    if (!isPushing && !options.printSchema) {
        throw Failure("push needs a PLACE, --create or --print-schema");
    }
    if (isPushing && !isStoreUrl(options.url)) {
        throw Failure(options.url + ": not a URL such as postgresql://server/database");
    }
    if (isPushing) {
        pushRecordings(options.url, load(options.places),
                       options.create ? Tables::MadeIfMissing : Tables::Required);
    }
    if (options.printSchema) {
        print(storeSchema());
    }
    return 0;
}

}  // namespace command
