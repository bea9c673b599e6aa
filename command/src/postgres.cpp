#include "postgres.h"

#include "places.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace command {
namespace {

constexpr int binary = 1;

struct Reason {
    std::string_view stateStart;  // of the SQLSTATE; the first that matches counts
    const char* text;
};

constexpr std::array<Reason, 7> reasons{{
    {"25006", "the database is read-only"},
    {"42501", "the server does not allow it"},
    {"42P01", "the tables are missing; lapwing push --create URL makes them"},
    {"53100", "the server's disk is full"},
    {"53", "the server has no room"},
    {"57P0", "the server ended the connection"},
    {"", "the server refuses it"},
}};

const char* reasonOf(std::string_view state) {
    return std::find_if(reasons.begin(), reasons.end(),
                        [&](const Reason& reason) {
                            return state.substr(0, reason.stateStart.size()) == reason.stateStart;
                        })
        ->text;
}

// libpq breaks and indents lines, and ends the last.
std::string joinLines(std::string_view text) {
    std::string joined;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const std::size_t start = line.find_first_not_of("\t ");
        if (start != std::string_view::npos) {
            joined += joined.empty() ? "" : "; ";
            joined += line.substr(start);
        }
    }
    return joined;
}

void ignoreNotice(void* /*argument*/, const char* /*message*/) {}

}  // namespace

bool PostgresRow::isNull(int column) const {
    return library.PQgetisnull(&result, row, column) != 0;
}

std::string_view PostgresRow::operator[](int column) const {
    return {library.PQgetvalue(&result, row, column),
            static_cast<std::size_t>(library.PQgetlength(&result, row, column))};
}

PostgresConnection::PostgresConnection(StoreUrl target)
    : library(postgresLibrary()), url(std::move(target)), owned(nullptr, Delete{&library}) {
    requireUrl();
    connect();
}

// libpq quotes what it does not understand, so it is shown nothing that could be secret before it
// is asked for its reasons.
void PostgresConnection::requireUrl() const {
    const auto reasonAgainst = [this](const std::string& text) {
        char* error = nullptr;
        library.PQconninfoFree(library.PQconninfoParse(text.c_str(), &error));
        std::string reason = error == nullptr ? "" : joinLines(error);
        library.PQfreemem(error);
        return reason;
    };
    if (reasonAgainst(url.connection).empty()) {
        return;
    }
    std::vector<std::string> harmless{url.shown};
    for (const std::string& key : url.parameters) {
        harmless.push_back("postgresql:///?" + key + '=');
    }
    for (const std::string& text : harmless) {
        if (const std::string reason = reasonAgainst(text); !reason.empty()) {
            refuse(reason);
        }
    }
    refuse("the password or a parameter is not percent-encoded as libpq wants it");
}

// A server can send notices while it connects, and libpq prints them unless it is told otherwise
// before. Only PQreset() connects a session that exists.
void PostgresConnection::connect() {
    const std::array<const char*, 4> keys{"fallback_application_name", "dbname", "client_encoding",
                                          nullptr};
    const std::array<const char*, 4> values{"lapwing", url.connection.c_str(), "UTF8", nullptr};
    owned.reset(library.PQconnectStartParams(keys.data(), values.data(), 1));
    if (!owned) {
        throw std::bad_alloc();
    }
    constexpr int sessionIsBad = 1;
    if (library.PQstatus(session()) != sessionIsBad) {
        library.PQsetNoticeProcessor(session(), ignoreNotice, nullptr);
        library.PQreset(session());
    }
    if (library.PQstatus(session()) != sessionIsGood) {
        refuse("cannot connect: " + joinLines(library.PQerrorMessage(session())));
    }
}

void PostgresConnection::run(const std::string& statements) {
    requireDone(own(library.PQexec(session(), statements.c_str())).get());
}

void PostgresConnection::query(const PostgresQuery& asked,
                               const std::function<void(const PostgresRow& row)>& take) {
    std::vector<const char*> values;
    for (const std::string& parameter : asked.parameters) {
        values.push_back(parameter.c_str());
    }
    if (library.PQsendQueryParams(session(), asked.statement.c_str(),
                                  static_cast<int>(values.size()), nullptr, values.data(), nullptr,
                                  nullptr, binary) == 0 ||
        library.PQsetSingleRowMode(session()) == 0) {
        fail(nullptr);
    }
    while (const Result result = nextResult()) {
        if (library.PQresultStatus(result.get()) != oneRow) {
            requireDone(result.get());
        }
        for (int row = 0; row < library.PQntuples(result.get()); ++row) {
            take(PostgresRow(library, *result, row));
        }
    }
}

void PostgresConnection::copy(const std::string& statement,
                              const std::function<void(const Write& write)>& source) {
    const Result begun = own(library.PQexec(session(), statement.c_str()));
    if (library.PQresultStatus(begun.get()) != copyInBegins) {
        fail(begun.get());
    }
    source([this](std::string_view bytes) {
        constexpr std::size_t most = 1U << 20U;
        for (; !bytes.empty(); bytes.remove_prefix(std::min(most, bytes.size()))) {
            const int size = static_cast<int>(std::min(most, bytes.size()));
            if (library.PQputCopyData(session(), bytes.data(), size) != 1) {
                fail(nextResult().get());
            }
        }
    });
    if (library.PQputCopyEnd(session(), nullptr) != 1) {
        fail(nextResult().get());
    }
    while (const Result result = nextResult()) {
        requireDone(result.get());
    }
}

PostgresConnection::Result PostgresConnection::nextResult() {
    return own(library.PQgetResult(session()));
}

void PostgresConnection::requireDone(const PostgresResult* result) const {
    const int status = library.PQresultStatus(result);
    if (status != commandIsDone && status != rowsAreDone) {
        fail(result);
    }
}

void PostgresConnection::refuse(const std::string& reason) const {
    throw Failure(url.shown + ": " + reason);
}

void PostgresConnection::fail(const PostgresResult* result) const {
    const char* const state = library.PQresultErrorField(result, sqlState);
    const char* const message = library.PQresultErrorField(result, primaryMessage);
    const bool isGood = library.PQstatus(session()) == sessionIsGood;
    refuse((isGood ? reasonOf(state == nullptr ? "" : state) : "the server ended the connection") +
           (": " + joinLines(message == nullptr ? library.PQerrorMessage(session()) : message)));
}

}  // namespace command
