// URLs of databases that hold recordings, such as postgresql://server/database?label=build%3D42.

#ifndef LAPWING_COMMAND_STORE_URL_H
#define LAPWING_COMMAND_STORE_URL_H

#include <string>
#include <string_view>
#include <vector>

namespace command {

struct StoreUrl {
    std::string connection;               // as libpq takes it
    std::string filter;                   // as lapwing::parseSelection() takes it
    std::string shown;                    // for messages: no password, no unusual parameter
    std::vector<std::string> parameters;  // the keys of those that libpq gets
};

// Whether a place is such a URL, right or wrong.
bool isStoreUrl(std::string_view place);

// Throws Failure for a URL of which it is not certain where the password ends.
StoreUrl parseStoreUrl(std::string_view url);

// Returns any argument as messages may show it: of a URL nothing but what is known to be no secret.
std::string shownArgument(const std::string& argument);

}  // namespace command

#endif  // LAPWING_COMMAND_STORE_URL_H
