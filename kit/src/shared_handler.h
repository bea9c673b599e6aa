// Handlers whose copies share their state.

#ifndef LAPWING_KIT_SRC_SHARED_HANDLER_H
#define LAPWING_KIT_SRC_SHARED_HANDLER_H

#include <lapwing/instrumentation.h>

#include <memory>
#include <string>
#include <utility>

namespace lapwing {

// Returns a handler that calls a `Callable` made of `parts`. Not by make_shared: with g++, its
// unique symbol would keep a host's module from being unloaded.
template <class Callable, class... Parts>
LogMessageHandler sharedHandler(Parts&&... parts) {
    const std::shared_ptr<Callable> callable(new Callable{std::forward<Parts>(parts)...});
    return [callable](const std::string& line) { (*callable)(line); };
}

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_SHARED_HANDLER_H
