#include <lapwing/kit/recording_file.h>

#include "file_replacement.h"
#include "recording_format.h"
#include "system_file.h"
#include "utc_text.h"

#include <algorithm>
#include <istream>
#include <memory>
#include <ostream>
#include <sstream>
#include <system_error>
#include <unordered_map>
#include <utility>

namespace lapwing {

namespace fs = std::filesystem;

namespace {

bool isFolder(const fs::path& file) {
    std::error_code error;
    return fs::is_directory(file, error);
}

std::vector<Recording> loadFile(const fs::path& file, const RecordingLimits& limits) {
    InputFile input(file);
    const auto read = [&input](char* buffer, std::size_t size) { return input.read(buffer, size); };
    return parseRecordings(read, displayName(file), limits);
}

std::vector<fs::path> filesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    while (!error && entry != fs::directory_iterator()) {
        if (entry->path().extension() == ".json" && !isFolder(entry->path())) {
            files.push_back(entry->path());
        }
        entry.increment(error);
    }
    if (error) {
        throwSystemError(folder, error.value());
    }
    std::sort(files.begin(), files.end());
    return files;
}

// Opening a pipe would wait for its other end.
void requireRegularFile(const fs::path& file) {
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw RecordingFileError(displayName(file), 1, 1, "not a regular file");
    }
}

void count(const Recording& recording, Counted& counted) {
    ++counted.recordings;
    for (const auto& [name, samples] : recording.profile.samples) {
        counted.samples += samples.size();
    }
}

// The recordings of the files of a folder, each once.
class Collection {
public:
    explicit Collection(const RecordingLimits& recordingLimits) : limits(recordingLimits) {}

    void add(const fs::path& file) {
        for (Recording& recording : loadFile(file, limits)) {
            add(std::move(recording), file);
        }
    }

    std::vector<Recording> extract() { return merged(std::move(recordings), {}); }

private:
    void add(Recording recording, const fs::path& file) {
        const auto [place, isNew] = places.emplace(recording.id, Place{recordings.size(), file});
        if (isNew) {
            count(recording, counted);
            limit(counted.recordings, limits.recordings, " recordings", file);
            limit(counted.samples, limits.samples, " samples", file);
            recordings.push_back(std::move(recording));
        } else {
            requireSame(place->second, recording, file);
        }
    }

    static void limit(std::size_t count, std::size_t maximum, const char* what,
                      const fs::path& file) {
        if (count > maximum) {
            throw RecordingFileError(displayName(file), 1, 1,
                                     "the folder has more than " + std::to_string(maximum) + what);
        }
    }

    struct Place {
        std::size_t index;
        fs::path file;
    };

    void requireSame(const Place& known, const Recording& recording, const fs::path& file) const {
        try {
            static_cast<void>(merged({recordings[known.index]}, {recording}));
        } catch (const std::invalid_argument& error) {
            throw RecordingFileError(
                displayName(file), 1, 1,
                error.what() + ("; the other is in " + displayName(known.file)));
        }
    }

    const RecordingLimits& limits;
    Counted counted;
    std::vector<Recording> recordings;
    std::unordered_map<std::string, Place> places;
};

std::vector<Recording> loadFolder(const fs::path& folder, const RecordingLimits& limits) {
    Collection collection(limits);
    for (const fs::path& file : filesIn(folder)) {
        requireRegularFile(file);
        collection.add(file);
    }
    return collection.extract();
}

// Bad recordings are found before `open` is called.
template <typename Open>
void save(const std::vector<Recording>& recordings, const Open& open) {
    std::unique_ptr<FileReplacement> replacement;
    formatRecordings(recordings, [&](std::string_view bytes) {
        if (!replacement) {
            replacement = open();
        }
        replacement->write(bytes);
    });
    replacement->commit();
}

void requireNewId(const std::string& id, const std::vector<Recording>& known,
                  const fs::path& file) {
    if (std::any_of(known.begin(), known.end(),
                    [&id](const Recording& recording) { return recording.id == id; })) {
        throw std::invalid_argument(displayName(file) + ": already has a recording " +
                                    inQuotes(id));
    }
}

// Reads the recording as a file of its own: what is written can be loaded again.
void requireWithinLimits(const Recording& recording, const std::vector<Recording>& others,
                         const fs::path& file, const RecordingLimits& limits) {
    Counted counted;
    std::for_each(others.begin(), others.end(), [&](const auto& other) { count(other, counted); });
    std::stringstream text;
    writeRecordings(text, {recording});
    const auto read = [&text](char* buffer, std::size_t size) {
        text.read(buffer, static_cast<std::streamsize>(size));
        return static_cast<std::size_t>(text.gcount());
    };
    try {
        static_cast<void>(parseRecordings(read, "the new recording", limits, counted));
    } catch (const RecordingFileError& error) {
        throw std::invalid_argument(displayName(file) + ": " + error.what());
    }
}

void appendToFile(const fs::path& file, const Recording& recording, const RecordingLimits& limits) {
    FileReplacement replacement(file);
    std::vector<Recording> recordings;
    if (replacement.targetExists()) {
        recordings = loadFile(file, limits);
    }
    requireNewId(recording.id, recordings, file);
    requireWithinLimits(recording, recordings, file, limits);
    recordings.push_back(recording);
    formatRecordings(recordings,
                     [&replacement](std::string_view bytes) { replacement.write(bytes); });
    replacement.commit();
}

bool isPlain(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-' ||
           c == '_';
}

// "20261121T144000Z-ID", without characters that a file system could refuse.
std::string fileStem(const Recording& recording) {
    constexpr std::size_t longestId = 64;
    std::string stem =
        toUtcText(std::chrono::floor<std::chrono::seconds>(recording.recorded)).value();
    stem.erase(
        std::remove_if(stem.begin(), stem.end(), [](char c) { return c == '-' || c == ':'; }),
        stem.end());
    stem += '-';
    for (const char c : recording.id.substr(0, longestId)) {
        stem += isPlain(c) ? c : '_';
    }
    return stem;
}

// Different ids can amount to the same name.
std::unique_ptr<FileReplacement> openNewFile(const fs::path& folder, const Recording& recording,
                                             const RecordingLimits& limits) {
    const std::string stem = fileStem(recording);
    std::string suffix;
    for (int number = 2;; ++number) {
        const fs::path file = folder / (stem + suffix + ".json");
        auto replacement = std::make_unique<FileReplacement>(file);
        if (!replacement->targetExists()) {
            return replacement;
        }
        requireNewId(recording.id, loadFile(file, limits), file);
        suffix = '-' + std::to_string(number);
    }
}

}  // namespace

std::vector<Recording> loadRecordings(const fs::path& file, const RecordingLimits& limits) {
    return isFolder(file) ? loadFolder(file, limits) : loadFile(file, limits);
}

void saveRecordings(const fs::path& file, const std::vector<Recording>& recordings) {
    save(recordings, [&file] { return std::make_unique<FileReplacement>(file); });
}

void appendRecording(const fs::path& file, const Recording& recording,
                     const RecordingLimits& limits) {
    if (isFolder(file)) {
        requireWithinLimits(recording, {}, file, limits);
        save({recording}, [&] { return openNewFile(file, recording, limits); });
    } else {
        appendToFile(file, recording, limits);
    }
}

std::vector<Recording> readRecordings(std::istream& stream, const std::string& name,
                                      const RecordingLimits& limits) {
    const auto require = [&name](bool isReadable) {
        if (!isReadable) {
            throw std::system_error(std::make_error_code(std::errc::io_error), name);
        }
    };
    require(!stream.fail());
    const auto read = [&](char* buffer, std::size_t size) {
        stream.read(buffer, static_cast<std::streamsize>(size));
        require(!stream.bad());
        return static_cast<std::size_t>(stream.gcount());
    };
    return parseRecordings(read, name, limits);
}

void writeRecordings(std::ostream& stream, const std::vector<Recording>& recordings) {
    formatRecordings(recordings, [&stream](std::string_view bytes) {
        stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    });
}

}  // namespace lapwing
