#include "arguments.h"

#include "commands.h"
#include "places.h"
#include "store_url.h"
#include "text_table.h"
#include "values.h"

#include <lapwing/kit/recording_file.h>
#include <lapwing/version.h>

#include <algorithm>
#include <functional>
#include <list>
#include <memory>
#include <sstream>

#include <CLI/CLI.hpp>

namespace command {
namespace {

using Values = std::vector<std::string>;
constexpr std::int64_t mostTimes = 1'000'000;
constexpr std::int64_t mostMilliseconds = 7LL * 24 * 60 * 60 * 1000;

class Options;

// What the user wants, while the arguments are parsed.
struct Request {
    Tokens tokens;
    Values program;
    bool hasProgram = false;
    std::function<int()> run;
    std::list<Options> commands;
};

// The options of one command. Their values are given as they were typed.
class Options {
public:
    Options(CLI::App& parent, Request& whole, const std::string& name, const std::string& purpose)
        : command(*parent.add_subcommand(name, purpose)), request(whole) {}

    using Take = std::function<void(const std::string& option, const std::string& value)>;

    // `value` stands for the value in the help.
    CLI::Option* one(const std::string& option, const std::string& value, const std::string& help,
                     const Take& take) {
        const auto takeOne = [this, option, take](const std::string& token) {
            take(option, request.tokens.reveal(token));
        };
        return command.add_option_function<std::string>(option, takeOne, help)->type_name(value);
    }

    CLI::Option* many(const std::string& option, const std::string& value, const std::string& help,
                      const Take& take) {
        return command.add_option_function<Values>(option, takeAll(option, take), help)
            ->type_name(value)
            ->allow_extra_args(false);
    }

    CLI::Option* flag(const std::string& option, const std::string& help, bool& value) {
        return command.add_flag(option, value, help);
    }

    CLI::Option* place(const std::string& name, const std::string& help, std::string& value) {
        const auto takeOne = [this, &value](const std::string& token) {
            value = request.tokens.reveal(token);
        };
        return command.add_option_function<std::string>(name, takeOne, help)->type_name("");
    }

    CLI::Option* places(Places& values) {
        const auto take = [&values](const std::string& /*name*/, const std::string& value) {
            values.push_back(value);
        };
        return command.add_option_function<Values>("PLACE", takeAll("PLACE", take), placeHelp)
            ->type_name("");
    }

    void onFinish(std::function<int()> run) {
        command.callback([this, run = std::move(run)] { request.run = run; });
    }

    [[nodiscard]] const Request& whole() const { return request; }
    CLI::App& parser() { return command; }

    static constexpr const char* placeHelp =
        "A file or a folder of recordings, or postgresql://SERVER/DATABASE";

private:
    std::function<void(const Values&)> takeAll(const std::string& option, const Take& take) {
        return [this, option, take](const Values& values) {
            for (const std::string& token : values) {
                take(option, request.tokens.reveal(token));
            }
        };
    }

    CLI::App& command;
    Request& request;
};

Options::Take to(std::string& target) {
    return [&target](const std::string& /*option*/, const std::string& value) { target = value; };
}

Options::Take toFile(std::string& target) {
    return [&target](const std::string& option, const std::string& value) {
        if (value.empty()) {
            throw Failure(option + ": the name of a file is missing");
        }
        target = value;
    };
}

// Files of recordings hold no longer text.
std::string bytesIn(const std::string& option, const std::string& value) {
    std::string bytes;
    inOption(option, [&] { bytes = bytesOf(value); });
    const std::size_t most = lapwing::RecordingLimits{}.bytesPerText;
    if (bytes.size() > most) {
        throw Failure(option + ": a name or label has more than " + std::to_string(most) +
                      " bytes");
    }
    return bytes;
}

Options::Take toNames(Values& target) {
    return [&target](const std::string& option, const std::string& value) {
        target.push_back(bytesIn(option, value));
    };
}

Options::Take toName(std::optional<std::string>& target) {
    return [&target](const std::string& option, const std::string& value) {
        target = bytesIn(option, value);
    };
}

Options::Take to(std::int64_t& target, std::int64_t least, std::int64_t most) {
    return [&target, least, most](const std::string& option, const std::string& value) {
        target = wholeNumber(option, value, least, most);
    };
}

Options::Take to(Labels& target) {
    return [&target](const std::string& option, const std::string& value) {
        const auto [key, text] = pairOf(option, value);
        target[bytesIn(option, key)] = bytesIn(option, text);
    };
}

Options::Take to(Renames& target) {
    return [&target](const std::string& option, const std::string& value) {
        const auto [from, into] = pairOf(option, value);
        target.emplace_back(bytesIn(option, from), bytesIn(option, into));
    };
}

// Only the name may stand in hexadecimal.
Options::Take toLines(Renames& target) {
    return [&target](const std::string& option, const std::string& value) {
        auto [name, line] = pairOf(option, value);
        target.emplace_back(bytesIn(option, name), std::move(line));
    };
}

Options::Take to(std::optional<double>& target) {
    return [&target](const std::string& option, const std::string& value) {
        target = decimalNumber(option, value);
    };
}

void addLabels(Options& options, Labels& labels) {
    options.many("--label", "KEY=VALUE", "Give the recording a label", to(labels));
}

void describeProgram(Options& options) {
    options.parser().footer("The command to run stands behind --, with its arguments.");
}

void requireProgram(const Request& request) {
    if (request.program.empty()) {
        throw Failure("no command to run: put it behind --");
    }
}

void addRecord(CLI::App& app, Request& request, RecordOptions& values) {
    static const char* const purpose = "Run a command, and record how long it takes";
    auto& options = request.commands.emplace_back(app, request, "record", purpose);
    describeProgram(options);
    options.one("-n", "RUNS", "How often to run it (1)", to(values.runs, 1, mostTimes));
    options.one("--recordings", "N", "Make so many recordings (1)",
                to(values.recordings, 1, mostTimes));
    options.one("--warmup", "N", "Run it so often before, untimed (0)",
                to(values.warmup, 0, mostTimes));
    options.one("--prepare", "COMMANDLINE", "Run this in a shell before each run, untimed",
                to(values.prepare));
    options.flag("--ignore-failure", "Record runs that fail, too", values.ignoreFailure);
    auto* const name = options.one("--name", "NAME", "The operation (the program's file name)",
                                   toName(values.name));
    addLabels(options, values.labels);
    options.one("--into", "PLACE", "Where to add the recording", toFile(values.into))->required();
    auto* const run =
        options.many("--run", "NAME=COMMANDLINE", "Run this in a shell, in turn with the others",
                     toLines(values.lines));
    run->excludes(name);
    options.onFinish([&] {
        values.program = request.program;
        if (values.lines.empty()) {
            requireProgram(request);
        } else if (request.hasProgram) {
            throw Failure("either --run or a command behind --, not both");
        }
        return record(values);
    });
}

void addReplay(CLI::App& app, Request& request, ReplayOptions& values) {
    static const char* const purpose = "Run a command, and make it last as long as recorded";
    auto& options = request.commands.emplace_back(app, request, "replay", purpose);
    describeProgram(options);
    options.place("PLACE", Options::placeHelp, values.place)->required();
    options.one("-n", "RUNS", "How often to run it (1)", to(values.runs, 1, mostTimes));
    options.one("--name", "NAME", "The operation, if there are several", toName(values.name));
    options.one("--policy", "POLICY", "average, median, pNN, order or random (average)",
                to(values.policy));
    options.one("--seed", "N", "For random and jitter; without it, each call has a new one",
                [&](const std::string& option, const std::string& value) {
                    values.seed = seedNumber(option, value);
                });
    options.one("--scale", "F", "Multiply by this",
                [&](const std::string& option, const std::string& value) {
                    values.scale = factorNumber(option, value);
                });
    options.one("--jitter", "MS", "Add up to so many milliseconds, or take them away",
                to(values.jitter, 0, mostMilliseconds));
    options.one("--cap", "MS", "Last at most so many milliseconds",
                [&](const std::string& option, const std::string& value) {
                    values.cap = wholeNumber(option, value, 0, mostMilliseconds);
                });
    options.flag("--report", "Print a table on standard error", values.report);
    options.one("--page", "PAGE.html", "Write a page to look at", toFile(values.page));
    options.onFinish([&] {
        requireProgram(request);
        values.program = request.program;
        return replay(values);
    });
}

void addFormats(Options& options, Format& format, bool hasCsv) {
    const auto set = [&format](Format chosen) {
        return [&format, chosen](std::int64_t /*times*/) { format = chosen; };
    };
    auto* const json =
        options.parser().add_flag_function("--json", set(Format::Json), "Print JSON");
    if (hasCsv) {
        options.parser()
            .add_flag_function("--csv", set(Format::Csv), "Print one line per sample")
            ->excludes(json);
    }
}

void addShow(CLI::App& app, Request& request, ShowOptions& values) {
    static const char* const purpose = "Show what was recorded";
    auto& options = request.commands.emplace_back(app, request, "show", purpose);
    options.places(values.places)->required();
    addFormats(options, values.format, true);
    options.onFinish([&] { return show(values); });
}

void addCompare(CLI::App& app, Request& request, CompareOptions& values) {
    static const char* const purpose = "Tell what became slower or faster";
    auto& options = request.commands.emplace_back(app, request, "compare", purpose);
    options.place("BEFORE", Options::placeHelp, values.before)->required();
    auto* const after = options.place("AFTER", "The same, recorded later", values.after);
    options.many("--names", "OLD=NEW", "Compare two operations of one place", to(values.names))
        ->excludes(after);
    options.one("--tolerance", "PERCENT", "A change of so much is none", to(values.tolerance));
    options.one("--at-least", "MS", "A change of fewer milliseconds is none",
                [&](const std::string& option, const std::string& value) {
                    values.atLeast = wholeNumber(option, value, 0, mostMilliseconds);
                });
    options.flag("--strict", "Exit with 3 if there is too little to tell", values.strict);
    addFormats(options, values.format, false);
    options.onFinish([&] {
        if (values.after.empty() && values.names.empty()) {
            throw Failure("compare needs two places, or one and --names");
        }
        return compare(values);
    });
}

void addMerge(CLI::App& app, Request& request, MergeOptions& values) {
    static const char* const purpose = "Put recordings into one file";
    auto& options = request.commands.emplace_back(app, request, "merge", purpose);
    options.one("-o", "FILE", "The file to write, or - for standard output", toFile(values.output))
        ->required();
    options.places(values.places)->required();
    options.onFinish([&] { return merge(values); });
}

void addEdit(CLI::App& app, Request& request, EditOptions& values) {
    static const char* const purpose = "Write a changed copy of recordings";
    auto& options = request.commands.emplace_back(app, request, "edit", purpose);
    options.place("PLACE", Options::placeHelp, values.place)->required();
    options.one("-o", "FILE", "The file to write, or - for standard output", toFile(values.output))
        ->required();
    options.one("--scale", "F", "Multiply each sample by this", to(values.scale));
    options.one("--trim", "LOW..HIGH", "Keep the samples between two percentiles",
                [&](const std::string& option, const std::string& value) {
                    values.trim = rangeOf(option, value);
                });
    options.one(
        "--reduce", "HOW", "Leave one sample: average, median or pNN",
        [&](const std::string& /*option*/, const std::string& value) { values.reduce = value; });
    options.many("--rename", "OLD=NEW", "Give an operation another name", to(values.renames));
    options.many("--only", "NAME", "Keep this operation", toNames(values.only));
    options.many("--without", "NAME", "Drop this operation", toNames(values.without));
    addLabels(options, values.labels);
    options.onFinish([&] { return edit(values); });
}

void addImport(CLI::App& app, Request& request, ImportOptions& values) {
    static const char* const purpose = "Make a recording of what other programs have written";
    auto& options = request.commands.emplace_back(app, request, "import", purpose);
    options.one("--into", "PLACE", "Where to add the recording", toFile(values.into))->required();
    auto* const log =
        options.one("--log", "FILE", "A log with lines of Instrumentation", toFile(values.log));
    options.one("--prefix", "REGEX", "What stands before a name in the log", to(values.prefix))
        ->needs(log);
    auto* const runs = options.one("--hyperfine", "FILE", "The JSON that hyperfine exports",
                                   toFile(values.hyperfine));
    auto* const csv =
        options.one("--csv", "FILE", "Lines of name,milliseconds", toFile(values.csv));
    log->excludes(runs)->excludes(csv);
    runs->excludes(csv);
    addLabels(options, values.labels);
    options.onFinish([&] {
        if (values.log.empty() && values.hyperfine.empty() && values.csv.empty()) {
            throw Failure("import needs --log, --hyperfine or --csv");
        }
        return importSamples(values);
    });
}

void addReport(CLI::App& app, Request& request, ReportOptions& values) {
    static const char* const purpose = "Write a page to look at";
    auto& options = request.commands.emplace_back(app, request, "report", purpose);
    options.places(values.places)->required();
    options
        .one("-o", "PAGE.html", "The page to write, or - for standard output",
             toFile(values.output))
        ->required();
    options.one("--before", "PLACE", "Compare with this", toFile(values.before));
    options.onFinish([&] { return report(values); });
}

void addPush(CLI::App& app, Request& request, PushOptions& values) {
    static const char* const purpose = "Add recordings to a database";
    auto& options = request.commands.emplace_back(app, request, "push", purpose);
    options.place("URL", "The database, such as postgresql://SERVER/DATABASE", values.url);
    options.places(values.places);
    options.flag("--create", "Make the tables if they are missing", values.create);
    options.flag("--print-schema", "Print the SQL that makes the tables", values.printSchema);
    options.onFinish([&] { return push(values); });
}

void addPull(CLI::App& app, Request& request, PullOptions& values) {
    static const char* const purpose = "Write recordings of a database into a file";
    auto& options = request.commands.emplace_back(app, request, "pull", purpose);
    options
        .place("URL", "The database and a filter, such as postgresql://SERVER/DATABASE?last=9",
               values.url)
        ->required();
    options.one("-o", "FILE", "The file to write, or - for standard output", to(values.output))
        ->required();
    options.onFinish([&] { return pull(values); });
}

// Standard input may have a filter.
bool isOption(const std::string& argument) {
    return argument.size() > 1 && argument.front() == '-' && argument[1] != '?';
}

const CLI::App* findCommand(const CLI::App& app, const std::string& name) {
    const auto found = app.get_subcommands(
        [&name](const CLI::App* command) { return command->get_name() == name; });
    return found.empty() ? nullptr : found.front();
}

// Null if there is no such option.
const CLI::Option* findOption(const CLI::App& app, const std::string& command,
                              const std::string& option) {
    const CLI::App* const parser = findCommand(app, command);
    return parser == nullptr ? nullptr : parser->get_option_no_throw(option);
}

bool takesValue(const CLI::Option* known) {
    return known != nullptr && known->get_items_expected_max() > 0;
}

// Of an option with its value in one argument.
void requireTakesValue(const CLI::Option* known, const std::string& option) {
    if (option == "--" || (known != nullptr && !takesValue(known))) {
        throw Failure(option + " takes no value");
    }
}

// Returns the arguments with tokens in the place of values, as `app` is to see them. The first
// argument is the command.
Values hideValues(const CLI::App& app, const Values& arguments, Tokens& tokens) {
    Values hidden;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const std::size_t nameEnd = argument->compare(0, 2, "--") == 0 ? argument->find('=') : 2;
        const bool isCommand = argument == arguments.begin();
        if (!isOption(*argument)) {
            hidden.push_back(isCommand ? *argument : tokens.hide(*argument));
        } else if (nameEnd < argument->size()) {
            const bool isLong = argument->compare(0, 2, "--") == 0;
            const std::string option = argument->substr(0, nameEnd);
            requireTakesValue(findOption(app, arguments.front(), option), option);
            hidden.push_back(option);
            hidden.push_back(tokens.hide(argument->substr(nameEnd + (isLong ? 1 : 0))));
        } else {
            hidden.push_back(*argument);
            const CLI::Option* const known = findOption(app, arguments.front(), *argument);
            if (takesValue(known) && argument + 1 != arguments.end()) {
                hidden.push_back(tokens.hide(*++argument));
            }
        }
    }
    return hidden;
}

void requireCommand(const CLI::App& app, const Values& arguments) {
    const bool isNamed = !arguments.empty() && !isOption(arguments.front());
    if (isNamed && findCommand(app, arguments.front()) == nullptr) {
        throw Failure("no command \"" + lapwing::onOneLine(shownArgument(arguments.front())) +
                      "\"; see lapwing --help");
    }
}

// Returns whether only help was wanted.
bool parse(CLI::App& app, const Values& arguments, Request& request) {
    requireCommand(app, arguments);
    Values hidden = hideValues(app, arguments, request.tokens);
    std::reverse(hidden.begin(), hidden.end());
    try {
        app.parse(hidden);
        return false;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            std::ostringstream help;
            app.exit(error, help, help);
            print(help.str());
            return true;
        }
        throw Failure(request.tokens.reveal(error.what(), shownArgument));
    }
}

}  // namespace

int runArguments(const std::vector<std::string>& arguments) {
    Request request;
    const auto separator = std::find(arguments.begin(), arguments.end(), "--");
    request.hasProgram = separator != arguments.end();
    if (request.hasProgram) {
        request.program.assign(separator + 1, arguments.end());
    }
    CLI::App app("Records how long commands take, and makes stand-ins last as long.", "lapwing");
    app.require_subcommand(1);
    app.set_version_flag("--version", "lapwing " LAPWING_VERSION);
    RecordOptions recording;
    ReplayOptions replaying;
    ShowOptions showing;
    CompareOptions comparing;
    MergeOptions merging;
    EditOptions editing;
    ImportOptions importing;
    ReportOptions reporting;
    PushOptions pushing;
    PullOptions pulling;
    addRecord(app, request, recording);
    addReplay(app, request, replaying);
    addShow(app, request, showing);
    addCompare(app, request, comparing);
    addMerge(app, request, merging);
    addEdit(app, request, editing);
    addImport(app, request, importing);
    addReport(app, request, reporting);
    addPush(app, request, pushing);
    addPull(app, request, pulling);
    if (parse(app, Values(arguments.begin(), separator), request)) {
        return 0;
    }
    const bool takesProgram = app.got_subcommand("record") || app.got_subcommand("replay");
    if (request.hasProgram && !takesProgram) {
        throw Failure("only record and replay take a command behind --");
    }
    return request.run();
}

}  // namespace command
