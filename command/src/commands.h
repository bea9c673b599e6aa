// The commands, one function each. All values are bytes as they were given; on Windows, UTF-8.

#ifndef LAPWING_COMMAND_COMMANDS_H
#define LAPWING_COMMAND_COMMANDS_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace command {

using Labels = std::map<std::string, std::string>;
using Names = std::vector<std::string>;
using Renames = std::vector<std::pair<std::string, std::string>>;  // from, to
using Places = std::vector<std::string>;

struct RecordOptions {
    std::int64_t runs = 1;
    std::int64_t recordings = 1;
    std::int64_t warmup = 0;
    std::string prepare;  // a line for the shell; may be empty
    bool ignoreFailure = false;
    std::optional<std::string> name;
    Labels labels;
    std::string into;
    std::vector<std::pair<std::string, std::string>> lines;  // name and a line for the shell
    std::vector<std::string> program;                        // what to start, and its arguments
};

struct ReplayOptions {
    std::string place;
    std::int64_t runs = 1;
    std::optional<std::string> name;
    std::string policy = "average";
    std::optional<std::uint64_t> seed;
    double scale = 1;
    std::int64_t jitter = 0;
    std::optional<std::int64_t> cap;
    bool report = false;
    std::string page;  // a file, or empty
    std::vector<std::string> program;
};

enum class Format { Table, Json, Csv };

struct ShowOptions {
    Places places;
    Format format = Format::Table;
};

struct CompareOptions {
    std::string before;
    std::string after;                    // empty if operations of one place are compared
    Renames names;                        // of one place: before, after
    std::optional<double> tolerance;      // percent
    std::optional<std::int64_t> atLeast;  // milliseconds
    bool strict = false;
    Format format = Format::Table;
};

struct MergeOptions {
    std::string output;
    Places places;
};

struct EditOptions {
    std::string place;
    std::string output;
    std::optional<double> scale;
    std::optional<std::pair<double, double>> trim;  // percentiles
    std::optional<std::string> reduce;              // average, median or pNN
    Renames renames;
    Names only;
    Names without;
    Labels labels;
};

struct ImportOptions {
    std::string into;
    std::string log;
    std::string prefix;
    std::string hyperfine;
    std::string csv;
    Labels labels;
};

struct ReportOptions {
    Places places;
    std::string output;
    std::string before;  // a place, or empty
};

struct PushOptions {
    std::string url;
    Places places;
    bool create = false;
    bool printSchema = false;
};

struct PullOptions {
    std::string url;
    std::string output;
};

// Each returns the exit code, and throws what keeps it from its work: that ends with exit code 2.
int record(const RecordOptions& options);
int replay(const ReplayOptions& options);
int show(const ShowOptions& options);
int compare(const CompareOptions& options);
int merge(const MergeOptions& options);
int edit(const EditOptions& options);
int importSamples(const ImportOptions& options);
int report(const ReportOptions& options);
int push(const PushOptions& options);
int pull(const PullOptions& options);

}  // namespace command

#endif  // LAPWING_COMMAND_COMMANDS_H
