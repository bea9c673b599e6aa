// A connection to a PostgreSQL server. All functions throw Failure, which names the URL without its
// password and says what went wrong.

#ifndef LAPWING_COMMAND_POSTGRES_H
#define LAPWING_COMMAND_POSTGRES_H

#include "postgres_library.h"
#include "store_url.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace command {

// A row of a result, whose values are in PostgreSQL's binary form.
class PostgresRow {
public:
    PostgresRow(const PostgresLibrary& functions, const PostgresResult& rows, int number)
        : library(functions), result(rows), row(number) {}

    [[nodiscard]] bool isNull(int column) const;
    [[nodiscard]] std::string_view operator[](int column) const;

private:
    const PostgresLibrary& library;
    const PostgresResult& result;
    int row;
};

// A statement, and the texts of its parameters $1, $2 and so on. They hold no zero bytes.
struct PostgresQuery {
    std::string statement;
    std::vector<std::string> parameters;
};

class PostgresConnection {
public:
    explicit PostgresConnection(StoreUrl target);

    // Runs statements that have neither parameters nor rows.
    void run(const std::string& statements);

    // Calls `take` with each row as it arrives.
    void query(const PostgresQuery& asked, const std::function<void(const PostgresRow& row)>& take);

    // Takes what COPY FROM STDIN reads.
    using Write = std::function<void(std::string_view bytes)>;
    void copy(const std::string& statement, const std::function<void(const Write& write)>& source);

    // Throws Failure, which begins with the URL.
    [[noreturn]] void refuse(const std::string& reason) const;

private:
    struct Delete {
        const PostgresLibrary* library;
        void operator()(PostgresSession* session) const { library->PQfinish(session); }
        void operator()(PostgresResult* result) const { library->PQclear(result); }
    };
    using Result = std::unique_ptr<PostgresResult, Delete>;

    void requireUrl() const;
    void connect();
    Result nextResult();
    Result own(PostgresResult* result) { return {result, Delete{&library}}; }
    void requireDone(const PostgresResult* result) const;
    [[nodiscard]] PostgresSession* session() const { return owned.get(); }
    [[noreturn]] void fail(const PostgresResult* result) const;

    const PostgresLibrary& library;
    StoreUrl url;
    std::unique_ptr<PostgresSession, Delete> owned;
};

}  // namespace command

#endif  // LAPWING_COMMAND_POSTGRES_H
