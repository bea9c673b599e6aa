#include <lapwing/kit/trace.h>

#include "handler_lock.h"
#include "shared_handler.h"
#include "system_file.h"
#include "system_timer.h"
#include "text_table.h"
#include "this_process.h"

#include <algorithm>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace lapwing {
namespace {

namespace fs = std::filesystem;

// std::to_string has a unique symbol, which would keep a host's module from being unloaded.
std::string decimal(std::uint64_t number, std::size_t width = 1) {
    std::string digits;
    for (; number != 0 || digits.size() < width; number /= 10) {
        digits.insert(digits.begin(), static_cast<char>('0' + number % 10));
    }
    return digits;
}

constexpr std::size_t blockSize = std::size_t{64} * 1024;

class LimitReached : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Keeps pieces of text until there is a block of them. The file has whole pieces only.
class BlockFile {
public:
    BlockFile(const fs::path& path, std::uint64_t mostBytes)
        : name(path), file(createFile(path)), limit(mostBytes) {
        kept.reserve(2 * blockSize);
    }

    void add(std::string_view piece) {
        if (piece.size() > limit - writtenBytes - kept.size()) {
            flush();
            throw LimitReached(displayName(name) + ": stops at its limit of " + decimal(limit) +
                               " bytes");
        }
        kept += piece;
        if (kept.size() >= blockSize) {
            flush();
        }
    }

    void flush() {
        try {
            writeAll(file, kept, name);
        } catch (const std::system_error&) {
            truncate(file, writtenBytes);
            throw;
        }
        writtenBytes += kept.size();
        kept.clear();
    }

private:
    fs::path name;
    SystemFile file;
    std::uint64_t limit;
    std::uint64_t writtenBytes = 0;
    std::string kept;
};

constexpr std::string_view instant = R"("i","s":"t")";

std::string jsonText(std::string_view text) {
    std::string result = "\"";
    for (const char byte : onOneLine(text)) {
        if (byte == '"' || byte == '\\') {
            result += '\\';
        }
        result += byte;
    }
    return result + '"';
}

std::string microseconds(Clock::duration time) {
    const std::chrono::nanoseconds exact = time;
    const auto count = static_cast<std::uint64_t>(exact.count());
    return decimal(count / 1000) + '.' + decimal(count % 1000, 3);
}

bool removeSuffix(std::string_view& text, std::string_view suffix) {
    if (text.size() < suffix.size() || text.substr(text.size() - suffix.size()) != suffix) {
        return false;
    }
    text.remove_suffix(suffix.size());
    return true;
}

std::string_view withoutIndentation(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return text;
}

// A line, and for the beginning or end of a scope what both have in common: indentation and name.
struct Line {
    enum Kind { Begin, End, Other };
    Kind kind;
    std::string_view text;
};

bool removeNumber(std::string_view& text) {
    const std::size_t length = text.find_last_not_of("0123456789") + 1;
    const bool hasNumber = length != text.size();
    text = text.substr(0, length);
    return hasNumber;
}

Line parse(std::string_view line) {
    std::string_view scope = line;
    if (removeSuffix(scope, ": Begin")) {
        return {Line::Begin, scope};
    }
    if (removeSuffix(scope, " ms") && removeNumber(scope) && removeSuffix(scope, ": End - ")) {
        return {Line::End, scope};
    }
    return {Line::Other, line};
}

// Where an event stands.
struct Place {
    std::uint32_t thread;
    std::string time;
};

struct Scope {
    std::string text;
    bool hasEnded = false;
};

struct Thread {
    std::string name;
    std::vector<Scope> openScopes;  // the innermost is the last
};

Scope* findOpenScope(Thread& thread, std::string_view text) {
    const auto scope = std::find_if(
        thread.openScopes.rbegin(), thread.openScopes.rend(),
        [text](const Scope& candidate) { return !candidate.hasEnded && candidate.text == text; });
    return scope == thread.openScopes.rend() ? nullptr : &*scope;
}

}  // namespace

class TraceFile::Writer {
public:
    Writer(const fs::path& path, TraceOptions&& options)
        : problems(std::move(options.problems)), file(std::in_place, path, options.limit) {
        change([this] {
            file->add("[\n");
            writeName("process_name", processName(), threadId());
            file->flush();
        });
    }

    void write(const std::string& line) {
        const Clock::time_point time = now();
        const Place place{threadId(), microseconds(time - start)};
        change([&] { writeLine(line, place); });
    }

    void flush() {
        change([this] { file->flush(); });
    }

    void close() {
        change([this] {
            file->flush();
            file.reset();
        });
    }

private:
    // Makes a change of the file, if it is open. Reports a problem after the lock is released.
    template <class Change>
    void change(const Change& make) {
        std::string problem;
        if (const auto lock = lockForHandler(mutex); lock && file) {
            problem = problemOf(make);
        }
        if (!problem.empty() && problems) {
            problems(problem);
        }
    }

    template <class Change>
    std::string problemOf(const Change& make) {
        try {
            make();
            return {};
        } catch (const std::system_error& error) {
            file.reset();
            return error.what();
        } catch (const LimitReached& error) {
            file.reset();
            return error.what();
        }
    }

    void writeLine(std::string_view line, const Place& place);
    void end(Thread& thread, std::string_view scope, std::string_view line, const Place& place);
    Scope* findOpenScopeOfOthers(std::string_view scope);
    void writeEndsOfScopes(Thread& thread, const Place& place);
    void writeThreadName(Thread& thread, const Place& place);
    void writeEvent(std::string_view phase, std::string_view text, const Place& place);
    void writeName(std::string_view kind, const std::string& name, std::uint32_t thread);

    const Clock::time_point start = now();
    const std::uint32_t process = processId();
    const ProblemHandler problems;
    std::mutex mutex;
    std::optional<BlockFile> file;
    std::map<std::uint32_t, Thread> threads;
};

void TraceFile::Writer::writeLine(std::string_view line, const Place& place) {
    const Line parsed = parse(line);
    Thread& thread = threads.insert({place.thread, {}}).first->second;
    writeEndsOfScopes(thread, place);
    if (thread.openScopes.empty()) {
        writeThreadName(thread, place);
    }
    if (parsed.kind == Line::Begin) {
        thread.openScopes.push_back({std::string(parsed.text)});
        writeEvent(R"("B")", parsed.text, place);
    } else if (parsed.kind == Line::End) {
        end(thread, parsed.text, line, place);
    } else {
        writeEvent(instant, line, place);
    }
}

void TraceFile::Writer::end(Thread& thread, std::string_view scope, std::string_view line,
                            const Place& place) {
    Scope* const own = findOpenScope(thread, scope);
    Scope* const ended = own != nullptr ? own : findOpenScopeOfOthers(scope);
    if (ended != nullptr) {
        ended->hasEnded = true;
    }
    if (own == nullptr || own != &thread.openScopes.back()) {
        writeEvent(instant, line, place);
    }
    writeEndsOfScopes(thread, place);
}

Scope* TraceFile::Writer::findOpenScopeOfOthers(std::string_view scope) {
    for (auto& entry : threads) {
        if (Scope* const found = findOpenScope(entry.second, scope)) {
            return found;
        }
    }
    return nullptr;
}

void TraceFile::Writer::writeEndsOfScopes(Thread& thread, const Place& place) {
    std::vector<Scope>& scopes = thread.openScopes;
    for (; !scopes.empty() && scopes.back().hasEnded; scopes.pop_back()) {
        writeEvent(R"("E")", scopes.back().text, place);
    }
}

// The system may give the number of a thread that has ended to a new one.
void TraceFile::Writer::writeThreadName(Thread& thread, const Place& place) {
    const std::string name = threadName();
    if (name != thread.name) {
        writeName("thread_name", name, place.thread);
        thread.name = name;
    }
}

void TraceFile::Writer::writeEvent(std::string_view phase, std::string_view text,
                                   const Place& place) {
    std::string event(R"({"ph":)");
    event.append(phase).append(R"(,"pid":)").append(decimal(process));
    event.append(R"(,"tid":)").append(decimal(place.thread));
    event.append(R"(,"ts":)").append(place.time);
    event.append(R"(,"name":)").append(jsonText(withoutIndentation(text))).append("},\n");
    file->add(event);
}

void TraceFile::Writer::writeName(std::string_view kind, const std::string& name,
                                  std::uint32_t thread) {
    std::string event(R"({"ph":"M","pid":)");
    event.append(decimal(process)).append(R"(,"tid":)").append(decimal(thread));
    event.append(R"(,"name":)").append(jsonText(kind));
    event.append(R"(,"args":{"name":)").append(jsonText(name)).append("}},\n");
    file->add(event);
}

namespace {

// Calls `next` also if nothing is written any more.
template <class Writer>
struct TraceHandler {
    std::shared_ptr<Writer> writer;
    LogMessageHandler next;

    void operator()(const std::string& line) const {
        writer->write(line);
        if (next) {
            next(line);
        }
    }
};

}  // namespace

TraceFile::TraceFile(const fs::path& file, TraceOptions options)
    : writer(new Writer(file, std::move(options))) {}

TraceFile::~TraceFile() {
    try {
        writer->close();
    } catch (...) {
    }
}

LogMessageHandler TraceFile::handler(LogMessageHandler next) {
    return sharedHandler<TraceHandler<Writer>>(writer, std::move(next));
}

void TraceFile::flush() {
    writer->flush();
}

}  // namespace lapwing
