// Where recordings come from and go to, and texts that commands write. A place is a file, a folder
// or the URL of a database.

#ifndef LAPWING_COMMAND_PLACES_H
#define LAPWING_COMMAND_PLACES_H

#include "commands.h"

#include <lapwing/kit/recording.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace command {

// What keeps a command from its work, as one line.
class Failure : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The same with an exit code of its own.
class Stop : public Failure {
public:
    Stop(const std::string& reason, int exitCode) : Failure(reason), code(exitCode) {}
    [[nodiscard]] int exitCode() const noexcept { return code; }

private:
    int code;
};

// The file that an argument names. Throws Failure for a URL.
std::filesystem::path pathOf(const std::string& argument);

// The bytes that a name or a label stands for: after "hex:" as in files, else the argument's own.
std::string bytesOf(const std::string& argument);

// Returns the recordings of a place or, for "-", of standard input. A filter may follow behind "?",
// unless there is a file of that whole name.
std::vector<lapwing::Recording> load(const std::string& place);

// Those of all places, combined as lapwing::merged() does.
std::vector<lapwing::Recording> load(const Places& places);

// A place's name in messages.
std::string nameOf(const std::string& place);

// Calls `read` with the file, or with standard input for "-".
void readFile(const std::string& file, const std::function<void(std::istream&)>& read);

// Replaces the file atomically, or writes to standard output for "-".
void save(const std::string& file, const std::vector<lapwing::Recording>& recordings);
void save(const std::string& file, std::string_view text);

// Adds a recording to a place.
void append(const std::string& place, const lapwing::Recording& recording);

// Throws unless append() could add so many to the place: it can be loaded and written, then, too.
void requireAppendable(const std::string& place, std::size_t recordings);

// Writes to standard output, byte for byte.
void print(std::string_view text);

}  // namespace command

#endif  // LAPWING_COMMAND_PLACES_H
