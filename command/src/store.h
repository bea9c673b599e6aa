// Recordings in a PostgreSQL database. A place that isStoreUrl() names it. All functions throw
// Failure, which names the URL without its password; the database is then as it was.

#ifndef LAPWING_COMMAND_STORE_H
#define LAPWING_COMMAND_STORE_H

#include <lapwing/kit/recording.h>

#include <string>
#include <vector>

namespace command {

// Returns the SQL that makes the tables.
std::string storeSchema();

enum class Tables { Required, MadeIfMissing };

// Adds the recordings that the database does not have, all or none of them, whoever else pushes.
// Recordings with the same id must have the same contents.
void pushRecordings(const std::string& url, std::vector<lapwing::Recording> recordings,
                    Tables tables);

// Throws unless pushRecordings() could add to the database.
void requirePushable(const std::string& url);

// Returns those that the filter of the place selects, in the order of lapwing::merged(). There may
// be as many as a file may hold.
std::vector<lapwing::Recording> pullRecordings(const std::string& place);

}  // namespace command

#endif  // LAPWING_COMMAND_STORE_H
