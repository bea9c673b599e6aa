#include "arguments.h"

#include "places.h"
#include "processes.h"
#include "text_table.h"
#include "utf8.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#endif

namespace {

constexpr int failed = 2;

// Names of files stand in reasons as they are, in any encoding.
std::string printable(std::string_view reason) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string line;
    while (!reason.empty()) {
        const std::size_t length = lapwing::utf8Prefix(reason);
        line += lapwing::onOneLine(reason.substr(0, length));
        reason.remove_prefix(length);
        if (!reason.empty()) {
            const auto byte = static_cast<unsigned char>(reason.front());
            line += {'\\', 'x', digits[byte / 16U], digits[byte % 16U]};
            reason.remove_prefix(1);
        }
    }
    return line;
}

int fail(const std::string& reason, int exitCode = failed) {
    std::cerr << "lapwing: " + printable(reason) + '\n';
    return exitCode;
}

int run(const std::vector<std::string>& arguments) {
    try {
        return command::runArguments(arguments);
    } catch (const command::Stop& stop) {
        return fail(stop.what(), stop.exitCode());
    } catch (const std::bad_alloc&) {
        return fail("out of memory");
    } catch (const std::exception& error) {
        return fail(error.what());
    }
}

}  // namespace

#ifdef _WIN32
extern "C" int wmain(int argc, wchar_t* argv[]) {
    const command::Utf8Console console;
    for (std::FILE* const stream : {stdin, stdout}) {
        _setmode(_fileno(stream), _O_BINARY);
    }
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.push_back(command::fromSystem(argv[i]));
    }
    return run(arguments);
}
#else
int main(int argc, char* argv[]) {
    return run(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
}
#endif
