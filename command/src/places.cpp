#include "places.h"

#include "store.h"
#include "store_url.h"

#include <lapwing/kit/file_text.h>
#include <lapwing/kit/recording_file.h>
#include <lapwing/kit/selection.h>

#include "file_replacement.h"
#include "system_file.h"

#include <fstream>
#include <iostream>
#include <sstream>
#include <system_error>

namespace fs = std::filesystem;

namespace command {
namespace {

using lapwing::Recording;

constexpr std::string_view standardStream = "-";
constexpr const char* standardInput = "standard input";

std::vector<Recording> loadAll(const std::string& place) {
    return place == standardStream ? lapwing::readRecordings(std::cin, standardInput)
                                   : lapwing::loadRecordings(pathOf(place));
}

bool exists(const std::string& place) {
    std::error_code error;
    return fs::exists(pathOf(place), error);
}

// Returns what a file of the recording would hold, which keeps to the limits of files.
std::vector<Recording> loadable(const Recording& recording) {
    std::stringstream file;
    lapwing::writeRecordings(file, {recording});
    return lapwing::readRecordings(file, "the new recording");
}

void checkWritten(const std::ios& stream, const std::string& name) {
    if (!stream) {
        throw Failure(name + ": cannot be written");
    }
}

// More can be written than a file may hold to be read.
void requireLoadable(std::size_t recordings, const std::string& file) {
    const std::size_t most = lapwing::RecordingLimits{}.recordings;
    if (recordings > most) {
        throw Failure(file + ": would have more than " + std::to_string(most) + " recordings");
    }
}

void requireNoStream(const std::string& place) {
    if (place == standardStream) {
        throw Failure("--into needs a file or a folder, not -");
    }
}

}  // namespace

fs::path pathOf(const std::string& argument) {
    if (isStoreUrl(argument)) {
        throw Failure(shownArgument(argument) + ": not a file");
    }
#ifdef _WIN32
    return fs::u8path(argument);
#else
    return argument;
#endif
}

std::string bytesOf(const std::string& argument) {
    constexpr std::string_view hex = "hex:";
    return argument.compare(0, hex.size(), hex) == 0 ? lapwing::fromFileText(argument) : argument;
}

std::vector<Recording> load(const std::string& place) {
    if (isStoreUrl(place)) {
        return pullRecordings(place);
    }
    const std::size_t filter = place.rfind('?');
    if (filter == std::string::npos || exists(place)) {
        return loadAll(place);
    }
    const lapwing::Selection selection = lapwing::parseSelection(place.substr(filter + 1));
    return lapwing::selected(lapwing::merged(loadAll(place.substr(0, filter)), {}), selection);
}

std::vector<Recording> load(const Places& places) {
    std::vector<Recording> all;
    for (const std::string& place : places) {
        all = lapwing::merged(std::move(all), load(place));
    }
    return all;
}

std::string nameOf(const std::string& place) {
    if (isStoreUrl(place)) {
        return shownArgument(place);
    }
    return place == standardStream ? standardInput : lapwing::displayName(pathOf(place));
}

void readFile(const std::string& file, const std::function<void(std::istream&)>& read) {
    if (file == standardStream) {
        read(std::cin);
        return;
    }
    std::ifstream stream(pathOf(file), std::ios::binary);
    if (!stream) {
        lapwing::throwSystemError(pathOf(file));
    }
    stream.exceptions(std::ios::badbit);
    try {
        read(stream);
    } catch (const std::ios::failure&) {
        lapwing::throwSystemError(pathOf(file));
    }
}

void save(const std::string& file, const std::vector<Recording>& recordings) {
    requireLoadable(recordings.size(), file);
    if (file == standardStream) {
        lapwing::writeRecordings(std::cout, recordings);
        checkWritten(std::cout.flush(), "standard output");
    } else {
        lapwing::saveRecordings(pathOf(file), recordings);
    }
}

void save(const std::string& file, std::string_view text) {
    if (file == standardStream) {
        print(text);
        return;
    }
    lapwing::FileReplacement replacement(pathOf(file));
    replacement.write(text);
    replacement.commit();
}

void append(const std::string& place, const Recording& recording) {
    requireNoStream(place);
    if (isStoreUrl(place)) {
        pushRecordings(place, loadable(recording), Tables::Required);
    } else {
        lapwing::appendRecording(pathOf(place), recording);
    }
}

void requireAppendable(const std::string& place, std::size_t recordings) {
    requireNoStream(place);
    if (isStoreUrl(place)) {
        requirePushable(place);
        return;
    }
    const fs::path path = pathOf(place);
    std::error_code error;
    const bool isFolder = fs::is_directory(path, error);
    const fs::path probe = isFolder ? path / "lapwing-probe.json" : path;
    const lapwing::FileReplacement replacement(probe);
    if (exists(place)) {
        recordings += lapwing::loadRecordings(path).size();
    }
    requireLoadable(recordings, place);
}

void print(std::string_view text) {
    std::cout << text;
    checkWritten(std::cout.flush(), "standard output");
}

}  // namespace command
