#include "store.h"

#include "hex.h"
#include "places.h"
#include "postgres.h"
#include "postgres_binary.h"

#include <lapwing/kit/file_text.h>
#include <lapwing/kit/recording_file.h>
#include <lapwing/kit/selection.h>

#include "recording_format.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <unordered_map>

namespace command {
namespace {

using lapwing::inQuotes;
using lapwing::Recording;
using lapwing::Selection;
using Recordings = std::vector<Recording>;
using Ids = std::vector<std::string>;

constexpr int schemaVersion = 1;
constexpr const char* schema = R"(CREATE TABLE lapwing_schema (version integer NOT NULL);
INSERT INTO lapwing_schema VALUES (1);

-- A text in labels is as in a file of recordings; one with a zero byte is in hexadecimal, too.
CREATE TABLE lapwing_recordings (
    id text COLLATE "C" PRIMARY KEY,
    recorded timestamptz(0) NOT NULL,
    labels jsonb NOT NULL
);
CREATE INDEX lapwing_recordings_labels ON lapwing_recordings USING gin (labels jsonb_path_ops);
CREATE INDEX lapwing_recordings_recorded ON lapwing_recordings (recorded, id);

-- In milliseconds. A name without samples has a note.
CREATE TABLE lapwing_samples (
    recording text COLLATE "C" NOT NULL REFERENCES lapwing_recordings ON DELETE CASCADE,
    name bytea NOT NULL,
    name_sha256 bytea NOT NULL GENERATED ALWAYS AS (sha256(name)) STORED,
    note bytea,
    samples bigint[] NOT NULL,
    PRIMARY KEY (recording, name_sha256)
);
CREATE INDEX lapwing_samples_name ON lapwing_samples (name_sha256);
)";

constexpr std::string_view hexPrefix = "hex:";

// jsonb holds no zero bytes.
std::string toStoreText(const std::string& bytes) {
    return bytes.find('\0') == std::string::npos ? lapwing::toFileText(bytes)
                                                 : std::string(hexPrefix) + toHex(bytes);
}

std::string fromStoreText(const std::string& text) {
    return text.compare(0, hexPrefix.size(), hexPrefix) == 0
               ? fromHex(std::string_view(text).substr(hexPrefix.size()))
               : text;
}

std::string toJson(const std::map<std::string, std::string>& labels) {
    nlohmann::json object = nlohmann::json::object();
    for (const auto& [key, text] : labels) {
        object[toStoreText(key)] = toStoreText(text);
    }
    return object.dump();
}

std::map<std::string, std::string> fromJson(std::string_view json) {
    const nlohmann::json object = nlohmann::json::parse(json, nullptr, false);
    std::map<std::string, std::string> labels;
    if (!object.is_object()) {
        throw std::invalid_argument("labels are an object");
    }
    for (const auto& [key, text] : object.items()) {
        if (!text.is_string()) {
            throw std::invalid_argument("labels are texts");
        }
        labels[fromStoreText(key)] = fromStoreText(text.get<std::string>());
    }
    return labels;
}

Seconds secondsOf(std::chrono::system_clock::time_point time) {
    return std::chrono::floor<std::chrono::seconds>(time);
}

std::chrono::system_clock::time_point clockTime(Seconds seconds) {
    using Time = std::chrono::system_clock::time_point;
    if (seconds < std::chrono::ceil<std::chrono::seconds>(Time::min()) ||
        seconds > std::chrono::floor<std::chrono::seconds>(Time::max())) {
        throw std::invalid_argument("this system's clock cannot hold its time");
    }
    return seconds;
}

void requireSchema(PostgresConnection& connection) {
    std::string version;
    connection.query({"SELECT max(version)::text FROM lapwing_schema", {}},
                     [&](const PostgresRow& row) { version = row[0]; });
    if (version != std::to_string(schemaVersion)) {
        connection.refuse("the tables have version " + (version.empty() ? "none" : version) +
                          "; this program knows only version " + std::to_string(schemaVersion));
    }
}

void makeTables(PostgresConnection& connection) {
    bool exist = false;
    connection.run("SELECT pg_advisory_xact_lock(1818325111)");  // As others may make them, too.
    connection.query({"SELECT 1 WHERE to_regclass('lapwing_schema') IS NOT NULL", {}},
                     [&](const PostgresRow& /*row*/) { exist = true; });
    if (!exist) {
        connection.run(schema);
    }
}

// What a question asks for. Its values are parameters.
class Conditions {
public:
    void add(const std::string& condition) {
        conditions += (conditions.empty() ? " WHERE " : " AND ") + condition;
    }

    // Returns what stands for a parameter.
    std::string place(std::string parameter) {
        parameters.push_back(std::move(parameter));
        return '$' + std::to_string(parameters.size());
    }

    [[nodiscard]] PostgresQuery query(const std::string& start, const std::string& end) const {
        return {start + conditions + end, parameters};
    }

private:
    std::string conditions;
    std::vector<std::string> parameters;
};

std::string timeText(std::chrono::system_clock::time_point time) {
    return std::to_string(secondsOf(time).time_since_epoch().count());
}

// The server computes the hashes before it plans, so that it knows how frequent the names are.
std::string nameCondition(Conditions& conditions, const std::set<std::string>& names) {
    std::string hashes;
    for (const std::string& name : names) {
        hashes += (hashes.empty() ? "sha256(" : ", sha256(") + conditions.place(bytesText(name)) +
                  "::bytea)";
    }
    return "s.name_sha256 IN (" + hashes + ')';
}

PostgresQuery headsQuery(const Selection& selection) {
    Conditions conditions;
    if (!selection.labels.empty()) {
        conditions.add("r.labels @> " + conditions.place(toJson(selection.labels)) + "::jsonb");
    }
    if (selection.since) {
        conditions.add("r.recorded >= to_timestamp(" +
                       conditions.place(timeText(*selection.since)) + ')');
    }
    if (selection.until) {
        conditions.add("r.recorded < to_timestamp(" + conditions.place(timeText(*selection.until)) +
                       ')');
    }
    if (!selection.names.empty()) {
        conditions.add("EXISTS (SELECT FROM lapwing_samples s WHERE s.recording = r.id AND " +
                       nameCondition(conditions, selection.names) + ')');
    }
    std::string end = " ORDER BY r.recorded DESC, r.id DESC";
    if (selection.last) {
        constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
        const std::uint64_t last = std::min<std::uint64_t>(*selection.last, most);
        end += " LIMIT " + conditions.place(std::to_string(last));
    }
    return conditions.query("SELECT r.id, r.recorded, r.labels FROM lapwing_recordings r", end);
}

PostgresQuery headsQuery(const Ids& ids) {
    Conditions conditions;
    conditions.add("r.id = ANY (" + conditions.place(arrayText(ids)) + "::text[])");
    return conditions.query("SELECT r.id, r.recorded, r.labels FROM lapwing_recordings r", "");
}

PostgresQuery samplesQuery(const Ids& ids, const std::set<std::string>& names) {
    Conditions conditions;
    conditions.add("s.recording = ANY (" + conditions.place(arrayText(ids)) + "::text[])");
    if (!names.empty()) {
        conditions.add(nameCondition(conditions, names));
    }
    return conditions.query("SELECT s.recording, s.name, s.note, s.samples FROM lapwing_samples s",
                            "");
}

// Reads recordings, within the limits of a file.
class Puller {
public:
    explicit Puller(PostgresConnection& open) : connection(open) {}

    // Returns them in the order in which `heads` has them.
    Recordings pull(const PostgresQuery& heads, const std::set<std::string>& names) {
        Recordings recordings;
        connection.query(heads, [&](const PostgresRow& row) {
            inRecording(row[0], [&] { recordings.push_back(head(row)); });
            limit(recordings.size(), limits.recordings, " recordings");
        });
        for (std::size_t start = 0; start < recordings.size(); start += batch) {
            addSamples(recordings, start, names);
        }
        return recordings;
    }

private:
    static constexpr std::size_t batch = 1000;
    using Places = std::unordered_map<std::string, std::size_t>;

    static Recording head(const PostgresRow& row) {
        Recording recording;
        recording.id = row[0];
        if (const std::string problem = lapwing::problemOfId(recording.id); !problem.empty()) {
            throw std::invalid_argument(problem);
        }
        recording.recorded = clockTime(readTime(row[1]));
        recording.labels = fromJson(readJsonb(row[2]));
        return recording;
    }

    void addSamples(Recordings& recordings, std::size_t start, const std::set<std::string>& names) {
        Ids ids;
        Places places;
        for (std::size_t i = start; i < std::min(start + batch, recordings.size()); ++i) {
            ids.push_back(recordings[i].id);
            places.emplace(recordings[i].id, i);
        }
        connection.query(samplesQuery(ids, names), [&](const PostgresRow& row) {
            TimingProfile& profile = recordings[places.at(std::string(row[0]))].profile;
            inRecording(row[0], [&] { addName(row, profile); });
        });
    }

    void addName(const PostgresRow& row, TimingProfile& profile) {
        const std::string name(row[1]);
        if (!row.isNull(2)) {
            profile.notes.emplace(name, row[2]);
        }
        std::vector<Milliseconds> numbers = readBigints(row[3]);
        limit(samples += numbers.size(), limits.samples, " samples");
        if (!numbers.empty()) {
            profile.samples.emplace(name, std::move(numbers));
        }
    }

    template <class Read>
    void inRecording(std::string_view id, const Read& read) const {
        try {
            read();
        } catch (const std::invalid_argument& error) {
            connection.refuse("recording " + inQuotes(id) + ": " + error.what());
        }
    }

    void limit(std::size_t count, std::size_t most, const char* what) const {
        if (count > most) {
            connection.refuse("there are more than " + std::to_string(most) + what +
                              "; ask for fewer with a filter");
        }
    }

    const lapwing::RecordingLimits limits{};
    PostgresConnection& connection;
    std::size_t samples = 0;
};

// An index of the database holds ids.
void requireShortIds(const PostgresConnection& connection, const Recordings& recordings) {
    constexpr std::size_t most = 2000;
    for (const Recording& recording : recordings) {
        if (recording.id.size() > most) {
            connection.refuse("recording " + inQuotes(recording.id) + ": the id has more than " +
                              std::to_string(most) + " bytes");
        }
    }
}

void copyHeads(PostgresConnection& connection, const Recordings& recordings) {
    connection.copy("COPY lapwing_pushed FROM STDIN (FORMAT binary)",
                    [&](const PostgresConnection::Write& write) {
                        PostgresRows rows(write, 3);
                        for (const Recording& recording : recordings) {
                            rows.text(recording.id).time(secondsOf(recording.recorded));
                            rows.jsonb(toJson(recording.labels));
                        }
                        rows.finish();
                    });
}

// Returns the ids that the database did not have. All who push add ids in one order, so that they
// wait for each other and never in a circle.
std::set<std::string> addHeads(PostgresConnection& connection, const Recordings& recordings) {
    connection.run(
        "CREATE TEMPORARY TABLE lapwing_pushed (id text, recorded timestamptz, labels jsonb) "
        "ON COMMIT DROP");
    copyHeads(connection, recordings);
    std::set<std::string> added;
    connection.query({"INSERT INTO lapwing_recordings SELECT id, recorded, labels "
                      "FROM lapwing_pushed ORDER BY id COLLATE \"C\" "
                      "ON CONFLICT (id) DO NOTHING RETURNING id",
                      {}},
                     [&](const PostgresRow& row) { added.emplace(row[0]); });
    return added;
}

void addNames(PostgresRows& rows, const Recording& recording) {
    const TimingProfile& profile = recording.profile;
    for (const auto& [name, samples] : profile.samples) {
        const auto note = profile.notes.find(name);
        if (note != profile.notes.end()) {
            rows.text(recording.id).text(name).text(note->second).bigints(samples);
        } else if (!samples.empty()) {
            rows.text(recording.id).text(name).null().bigints(samples);
        }
    }
    for (const auto& [name, note] : profile.notes) {
        if (profile.samples.count(name) == 0) {
            rows.text(recording.id).text(name).text(note).bigints({});
        }
    }
}

void copySamples(PostgresConnection& connection, const Recordings& recordings,
                 const std::set<std::string>& ids) {
    connection.copy(
        "COPY lapwing_samples (recording, name, note, samples) FROM STDIN (FORMAT binary)",
        [&](const PostgresConnection::Write& write) {
            PostgresRows rows(write, 4);
            for (const Recording& recording : recordings) {
                if (ids.count(recording.id) != 0) {
                    addNames(rows, recording);
                }
            }
            rows.finish();
        });
}

// Compares some recordings at a time, so that memory does not grow with their number.
void requireSame(PostgresConnection& connection, const Recordings& recordings) {
    constexpr std::size_t batch = 100;
    for (auto start = recordings.begin(); start != recordings.end();) {
        const auto end = start + std::min<std::ptrdiff_t>(batch, recordings.end() - start);
        Ids ids;
        std::transform(start, end, std::back_inserter(ids), [](const auto& it) { return it.id; });
        const Recordings stored = Puller(connection).pull(headsQuery(ids), {});
        if (stored.size() != ids.size()) {
            connection.refuse("recordings were deleted at the same time; push again");
        }
        try {
            static_cast<void>(lapwing::merged({start, end}, stored));
        } catch (const std::invalid_argument& error) {
            connection.refuse(error.what() + std::string("; one is in the database"));
        }
        start = end;
    }
}

void push(PostgresConnection& connection, Recordings recordings) {
    requireShortIds(connection, recordings);
    const std::set<std::string> added = addHeads(connection, recordings);
    const auto known =
        std::stable_partition(recordings.begin(), recordings.end(),
                              [&](const auto& it) { return added.count(it.id) != 0; });
    requireSame(connection, {known, recordings.end()});
    copySamples(connection, recordings, added);
}

// Each statement sees what others have committed before it.
constexpr const char* beginPush = "BEGIN ISOLATION LEVEL READ COMMITTED";

StoreUrl targetOf(const std::string& place) {
    StoreUrl url = parseStoreUrl(place);
    if (!url.filter.empty()) {
        throw Failure(url.shown + ": a filter is for places that are read");
    }
    return url;
}

}  // namespace

std::string storeSchema() {
    return std::string("BEGIN;\n") + schema + "COMMIT;\n";
}

void pushRecordings(const std::string& url, Recordings recordings, Tables tables) {
    PostgresConnection connection(targetOf(url));
    connection.run(beginPush);
    if (tables == Tables::MadeIfMissing) {
        makeTables(connection);
    }
    requireSchema(connection);
    if (!recordings.empty()) {
        push(connection, std::move(recordings));
    }
    connection.run("COMMIT");
}

void requirePushable(const std::string& url) {
    PostgresConnection connection(targetOf(url));
    connection.run(beginPush);
    requireSchema(connection);
    push(connection, {});
}

Recordings pullRecordings(const std::string& place) {
    const StoreUrl url = parseStoreUrl(place);
    const Selection selection = lapwing::parseSelection(url.filter);
    PostgresConnection connection(url);
    connection.run("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY");
    requireSchema(connection);
    Recordings recordings = Puller(connection).pull(headsQuery(selection), selection.names);
    connection.run("COMMIT");
    std::reverse(recordings.begin(), recordings.end());
    return recordings;
}

}  // namespace command
