#include <charconv>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>

#include "comparisons.h"
#include "recording_format.h"

namespace {

using lapwing::Recording;

constexpr std::size_t names = 10;
constexpr std::size_t samplesOfName = 100'000;
constexpr std::size_t mostBytes = names * samplesOfName * 22;

// Takes every event and does nothing with it.
struct Ignore {
    static bool null() { return true; }
    static bool boolean(bool /*value*/) { return true; }
    static bool number_integer(std::int64_t /*value*/) { return true; }
    static bool number_unsigned(std::uint64_t /*value*/) { return true; }
    static bool number_float(double /*value*/, const std::string& /*digits*/) { return true; }
    static bool string(std::string& /*value*/) { return true; }
    static bool binary(nlohmann::json::binary_t& /*value*/) { return true; }
    static bool start_object(std::size_t /*size*/) { return true; }
    static bool key(std::string& /*name*/) { return true; }
    static bool end_object() { return true; }
    static bool start_array(std::size_t /*size*/) { return true; }
    static bool end_array() { return true; }
    static bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                            const nlohmann::json::exception& /*error*/) {
        return false;
    }
};

Recording recordingOfAMillionSamples() {
    Recording recording;
    recording.id = "1";
    std::uint32_t random = 1;
    for (std::size_t name = 0; name < names; ++name) {
        auto& samples = recording.profile.samples["SceneLoader::load" + std::to_string(name)];
        samples.reserve(samplesOfName);
        while (samples.size() < samplesOfName) {
            random = random * 1664525U + 1013904223U;
            samples.emplace_back(random >> (18U + random % 8U));
        }
    }
    return recording;
}

void format(const std::vector<Recording>& recordings, std::string& text) {
    text.clear();
    lapwing::formatRecordings(recordings, [&](std::string_view bytes) { text += bytes; });
}

std::string textOfAMillionSamples() {
    std::string text;
    format({recordingOfAMillionSamples()}, text);
    return text;
}

void load(benchmark::State& state) {
    const std::string text = textOfAMillionSamples();
    comparisons::repeat(state, [&] {
        std::size_t position = 0;
        const auto read = [&](char* buffer, std::size_t size) {
            const std::size_t count = text.copy(buffer, size, position);
            position += count;
            return count;
        };
        return lapwing::parseRecordings(read, "runs.json", {});
    });
}

void parseOnly(benchmark::State& state) {
    const std::string text = textOfAMillionSamples();
    comparisons::repeat(state, [&] {
        Ignore ignore;
        return nlohmann::json::sax_parse(text.begin(), text.end(), &ignore);
    });
}

// A file that both sides replace with one write.
class TemporaryFile {
public:
    TemporaryFile() = default;
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { std::filesystem::remove(path); }

    void replace(const char* data, std::size_t size) const {
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
            std::fopen(path.string().c_str(), "wb"), std::fclose);
        std::setvbuf(file.get(), nullptr, _IONBF, 0);
        std::fwrite(data, 1, size, file.get());
    }

private:
    std::filesystem::path path = std::filesystem::temp_directory_path() / "lapwing-bench.json";
};

// Both sides know how much memory they need.
void save(benchmark::State& state) {
    const std::vector<Recording> recordings = {recordingOfAMillionSamples()};
    const TemporaryFile file;
    std::string text(mostBytes, ' ');
    comparisons::repeat(state, [&] {
        format(recordings, text);
        file.replace(text.data(), text.size());
    });
}

void writeNumbers(benchmark::State& state) {
    const Recording recording = recordingOfAMillionSamples();
    const TemporaryFile file;
    std::string text(mostBytes, ' ');
    comparisons::repeat(state, [&] {
        char* end = text.data();
        for (const auto& [name, samples] : recording.profile.samples) {
            for (const Milliseconds sample : samples) {
                end = std::to_chars(end, text.data() + text.size(), sample.count()).ptr;
                *end++ = ',';
                *end++ = ' ';
            }
        }
        file.replace(text.data(), static_cast<std::size_t>(end - text.data()));
    });
}

}  // namespace

void compareRecordingFiles() {
    comparisons::add({"loading recordings: a million samples", 1.5, load, parseOnly});
    comparisons::add({"saving recordings: a million samples", 1.5, save, writeNumbers});
}
