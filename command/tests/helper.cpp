// A program for the tests to run, which shows how it was started.
//
//     show ARGUMENT...         prints each argument in brackets, then its standard input
//     sleep MILLISECONDS
//     exit CODE
//     append FILE TEXT [MOST]  fails with 7 if the file then holds more than MOST bytes

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#endif

namespace {

using Texts = std::vector<std::string>;

int show(const Texts& arguments) {
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        std::cout << '[' << arguments[i] << ']';
    }
    std::cout << std::string(std::istreambuf_iterator<char>(std::cin), {}) << std::flush;
    return 0;
}

int append(const Texts& arguments) {
    const std::string& file = arguments.at(1);
    std::ofstream(file, std::ios::app | std::ios::binary) << arguments.at(2);
    const bool isFull =
        arguments.size() > 3 && std::filesystem::file_size(file) > std::stoul(arguments[3]);
    return isFull ? 7 : 0;
}

int run(const Texts& arguments) {
    const std::string& action = arguments.at(0);
    if (action == "show") {
        return show(arguments);
    }
    if (action == "append") {
        return append(arguments);
    }
    if (action == "sleep") {
        std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(arguments.at(1))));
        return 0;
    }
    return std::stoi(arguments.at(1));
}

}  // namespace

#ifdef _WIN32
extern "C" int wmain(int argc, wchar_t* argv[]) {
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
    Texts arguments;
    for (int i = 1; i < argc; ++i) {
        char utf8[1000];
        WideCharToMultiByte(CP_UTF8, 0, argv[i], -1, utf8, sizeof utf8, nullptr, nullptr);
        arguments.emplace_back(utf8);
    }
    return run(arguments);
}
#else
int main(int argc, char* argv[]) {
    return run(Texts(argv + 1, argv + argc));
}
#endif
