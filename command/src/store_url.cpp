#include "store_url.h"

#include "places.h"

#include <algorithm>
#include <array>

namespace command {
namespace {

constexpr std::array<std::string_view, 2> schemes{"postgresql://", "postgres://"};
constexpr std::array<std::string_view, 5> filterKeys{"label", "name", "since", "until", "last"};
constexpr std::array<std::string_view, 7> plainKeys{"dbname", "host",    "hostaddr", "port",
                                                    "user",   "service", "sslmode"};

template <class Keys>
bool contains(const Keys& keys, std::string_view key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

bool isSameLetter(char left, char lower) {
    return left == lower || (left >= 'A' && left <= 'Z' && left - 'A' + 'a' == lower);
}

// Returns 0 if there is no scheme.
std::size_t lengthOfScheme(std::string_view place) {
    const auto* const scheme =
        std::find_if(schemes.begin(), schemes.end(), [&](std::string_view candidate) {
            const std::string_view start = place.substr(0, candidate.size());
            return std::equal(start.begin(), start.end(), candidate.begin(), candidate.end(),
                              isSameLetter);
        });
    return scheme == schemes.end() ? 0 : scheme->size();
}

// As libpq takes URLs apart.
struct Parts {
    std::string_view user;
    std::string_view secret;  // with the colon before it
    std::string_view server;  // with the @ before it, and the database
    std::string_view query;
};

Parts split(std::string_view rest) {
    Parts parts;
    const std::size_t userEnd = rest.find_first_of("@/");
    if (userEnd != std::string_view::npos && rest[userEnd] == '@') {
        const std::string_view user = rest.substr(0, userEnd);
        parts.user = user.substr(0, user.find(':'));
        parts.secret = user.substr(parts.user.size());
        rest.remove_prefix(userEnd);
    }
    parts.server = rest.substr(0, rest.find('?'));
    rest.remove_prefix(std::min(parts.server.size() + 1, rest.size()));
    parts.query = rest;
    return parts;
}

void addPair(std::string& query, std::string_view pair) {
    query += query.empty() ? "" : "&";
    query += pair;
}

std::string withQuery(const std::string& url, const std::string& query) {
    return query.empty() ? url : url + '?' + query;
}

}  // namespace

bool isStoreUrl(std::string_view place) {
    return lengthOfScheme(place) != 0;
}

StoreUrl parseStoreUrl(std::string_view url) {
    const std::string scheme(schemes.front());
    const Parts parts = split(url.substr(lengthOfScheme(url)));
    StoreUrl result;
    std::string passed;
    std::string plain;
    for (std::string_view rest = parts.query; !rest.empty();) {
        const std::string_view pair = rest.substr(0, rest.find('&'));
        const std::string_view key = pair.substr(0, pair.find('='));
        rest.remove_prefix(std::min(pair.size() + 1, rest.size()));
        if (contains(filterKeys, key)) {
            addPair(result.filter, pair);
            continue;
        }
        addPair(passed, pair);
        result.parameters.emplace_back(key);
        if (contains(plainKeys, key)) {
            addPair(plain, pair);
        }
    }
    if (parts.server.find('@', 1) != std::string_view::npos ||
        passed.find('@') != std::string::npos) {
        throw Failure(scheme + "...: the @ behind the user stands as it is, any other one is %40");
    }
    const std::string user(parts.user);
    result.connection =
        withQuery(scheme + user + std::string(parts.secret) + std::string(parts.server), passed);
    result.shown = withQuery(scheme + user + std::string(parts.server), plain);
    return result;
}

std::string shownArgument(const std::string& argument) {
    if (!isStoreUrl(argument)) {
        return argument;
    }
    try {
        return parseStoreUrl(argument).shown;
    } catch (const Failure&) {
        return std::string(schemes.front()) + "...";
    }
}

}  // namespace command
