// Replaces a file, or makes a new one, atomically and durably.

#ifndef LAPWING_KIT_SRC_FILE_REPLACEMENT_H
#define LAPWING_KIT_SRC_FILE_REPLACEMENT_H

#include <filesystem>
#include <memory>
#include <string_view>

namespace lapwing {

// The new contents stand in a temporary file beside the target, under one fixed name, until they
// are renamed over it. An open temporary file is also the lock: one replacement of a file exists at
// a time, in all threads and processes. The system frees the lock of a process that dies, and the
// next replacement removes what such a process left.
//
// Errors of the system are thrown as std::system_error and begin with the file's name. One object
// is used by one thread.
class FileReplacement {
public:
    // Waits for other replacements of the file. A symbolic link stands for the file it leads to.
    // Throws std::invalid_argument if the target is there but is not a regular file.
    explicit FileReplacement(const std::filesystem::path& file);

    // Without commit(), removes what was written.
    ~FileReplacement();

    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    // Whether the target is there. Nobody who uses this class changes that meanwhile.
    [[nodiscard]] bool targetExists() const;

    void write(std::string_view bytes);

    // Flushes what was written to the disk and puts it in the target's place. The last call. If it
    // throws, the target is unchanged, unless the disk fails while the folder is flushed.
    void commit();

private:
    struct State;
    std::unique_ptr<State> state;
};

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_FILE_REPLACEMENT_H
