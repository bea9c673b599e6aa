// The functions of libpq that are needed, with the names that they have there. The library is
// loaded when it is needed, so that the program starts without it. The types are those of its
// documented interface, which version 5 of the library keeps.

#ifndef LAPWING_COMMAND_POSTGRES_LIBRARY_H
#define LAPWING_COMMAND_POSTGRES_LIBRARY_H

namespace command {

struct PostgresSession;  // PGconn
struct PostgresResult;   // PGresult
struct PostgresOptions;  // PQconninfoOption

using NoticeProcessor = void (*)(void* argument, const char* message);

enum PostgresStatus { sessionIsGood = 0 };
enum PostgresResultStatus { commandIsDone = 1, rowsAreDone = 2, copyInBegins = 4, oneRow = 9 };
enum PostgresField { sqlState = 'C', primaryMessage = 'M' };

struct PostgresLibrary {
    PostgresOptions* (*PQconninfoParse)(const char* url, char** error);
    void (*PQconninfoFree)(PostgresOptions* options);
    void (*PQfreemem)(void* memory);
    PostgresSession* (*PQconnectStartParams)(const char* const* keys, const char* const* values,
                                             int expandDatabase);
    void (*PQreset)(PostgresSession* session);
    void (*PQfinish)(PostgresSession* session);
    int (*PQstatus)(const PostgresSession* session);
    char* (*PQerrorMessage)(const PostgresSession* session);
    NoticeProcessor (*PQsetNoticeProcessor)(PostgresSession* session, NoticeProcessor processor,
                                            void* argument);
    PostgresResult* (*PQexec)(PostgresSession* session, const char* statements);
    int (*PQsendQueryParams)(PostgresSession* session, const char* statement, int count,
                             const unsigned* types, const char* const* values, const int* lengths,
                             const int* formats, int resultFormat);
    int (*PQsetSingleRowMode)(PostgresSession* session);
    PostgresResult* (*PQgetResult)(PostgresSession* session);
    int (*PQputCopyData)(PostgresSession* session, const char* buffer, int size);
    int (*PQputCopyEnd)(PostgresSession* session, const char* error);
    int (*PQresultStatus)(const PostgresResult* result);
    char* (*PQresultErrorField)(const PostgresResult* result, int field);
    int (*PQntuples)(const PostgresResult* result);
    int (*PQgetisnull)(const PostgresResult* result, int row, int column);
    int (*PQgetlength)(const PostgresResult* result, int row, int column);
    char* (*PQgetvalue)(const PostgresResult* result, int row, int column);
    void (*PQclear)(PostgresResult* result);
};

// Loads the library at the first call. Throws Failure, which names the package, if there is none.
const PostgresLibrary& postgresLibrary();

}  // namespace command

#endif  // LAPWING_COMMAND_POSTGRES_LIBRARY_H
