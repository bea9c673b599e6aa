/// @file
/// Files and folders of recordings.
///
///     lapwing::appendRecording("runs.json", lapwing::makeRecording(collector.extractProfile()));
///     emulator.setProfile(lapwing::flattened(lapwing::loadRecordings("runs.json")));
///
/// A file is JSON, made to be read in a diff; docs/recordings.md describes the format. A folder
/// works wherever a file does: it holds one or more such files, whose names end in ".json".
///
/// In messages, paths are UTF-8 on Windows, and as they are elsewhere. The functions throw
/// std::system_error, with the file's name and the system's reason, if the system refuses: a
/// missing file, a folder that cannot be written, a full disk. They throw std::bad_alloc if memory
/// runs out. Existing files are then unchanged, with one exception: if flushing the folder fails,
/// the file has already been replaced.
///
/// Any number of threads and processes may call these functions at once, also on the same file.

#ifndef LAPWING_KIT_RECORDING_FILE_H
#define LAPWING_KIT_RECORDING_FILE_H

#include <lapwing/kit/recording.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

namespace lapwing {

/// A file does not hold what it should. what() is "FILE:LINE:COLUMN: REASON". Line and column count
/// from 1, the column in bytes; they are those of the offending token or just behind it.
class RecordingFileError : public std::runtime_error {
public:
    /// Composes what() of these.
    RecordingFileError(const std::string& file, std::size_t line, std::size_t column,
                       const std::string& reason);

    /// Where the file is wrong.
    [[nodiscard]] std::size_t line() const noexcept { return lineNumber; }

    /// Where the line is wrong.
    [[nodiscard]] std::size_t column() const noexcept { return columnNumber; }

private:
    std::size_t lineNumber;
    std::size_t columnNumber;
};

/// What loading accepts at most. `recordings` and `samples` are limits of a whole folder, where
/// what is in several files counts once.
struct RecordingLimits {
    std::uint64_t bytes = 256ULL << 20U;      ///< Of a file.
    std::size_t recordings = 10'000;          ///< In a file or in a folder.
    std::size_t namesPerRecording = 100'000;  ///< Of samples, of notes and of labels.
    std::size_t bytesPerText = 64U << 10U;    ///< Of a name, a note, a label's key or its text.
    std::size_t samples = 50'000'000;         ///< In a file or in a folder.
};

/// Returns the recordings of `file` in the order in which they stand there, or those of all files
/// in a folder (not below) that end in ".json", combined as merged() does. Throws
/// RecordingFileError, and returns nothing, if a file is not exactly what the format allows.
[[nodiscard]] std::vector<Recording> loadRecordings(const std::filesystem::path& file,
                                                    const RecordingLimits& limits = {});

/// Replaces `file` by one that holds `recordings`, atomically and durably: after an interruption at
/// any point, either the old or the new file is there, complete. It keeps the file's mode (a group
/// that cannot be kept gets no access), and a symbolic link stays one. On Windows the file gets the
/// permissions that its folder gives, and a link that leads nowhere is an error. Names without
/// samples are left out.
///
/// The new contents stand beside the file, as `.NAME.lapwing-new`, until they are complete. If a
/// process is killed and leaves that, the next save removes it. A read-only file is replaced, too,
/// on Linux if its folder can be written; Windows refuses. Hard links keep the old contents.
///
/// Throws std::invalid_argument if two recordings have the same id, if an id or a time cannot be
/// stored (years 0 to 9999 can), or if `file` exists and is not a regular file.
void saveRecordings(const std::filesystem::path& file, const std::vector<Recording>& recordings);

/// Adds `recording` to a file, which is made if there is none, as atomically as saveRecordings()
/// does. No other recording is lost if several threads or processes append at once. If `file` is a
/// folder, the recording gets a file of its own there, named by time and id.
///
/// Throws std::invalid_argument as saveRecordings() does, and if the file has that id already or
/// would hold more than `limits` allow; RecordingFileError if the file cannot be loaded within
/// them. A folder is not searched for the id.
void appendRecording(const std::filesystem::path& file, const Recording& recording,
                     const RecordingLimits& limits = {});

/// Reads the format from a stream. `name` stands for the file in errors.
[[nodiscard]] std::vector<Recording> readRecordings(std::istream& stream, const std::string& name,
                                                    const RecordingLimits& limits = {});

/// Writes the format to a stream. Throws std::invalid_argument as saveRecordings() does. The caller
/// checks the state of the stream.
void writeRecordings(std::ostream& stream, const std::vector<Recording>& recordings);

}  // namespace lapwing

#endif  // LAPWING_KIT_RECORDING_FILE_H
