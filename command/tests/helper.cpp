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
#include <string>
#include <thread>
#include <vector>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#endif

static int run(const std::vector<std::string>& arguments) {
    const std::string& action = arguments.at(0);
    if (action == "show") {
        for (std::size_t i = 1; i < arguments.size(); ++i) {
            std::cout << '[' << arguments[i] << ']';
        }
        std::cout << std::cin.rdbuf();
    } else if (action == "append") {
        std::ofstream(arguments.at(1), std::ios::app) << arguments.at(2);
        const bool isLimited = arguments.size() > 3;
        return isLimited && std::filesystem::file_size(arguments[1]) > std::stoul(arguments[3]) ? 7
                                                                                                : 0;
    } else if (action == "sleep") {
        std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(arguments.at(1))));
    } else {
        return std::stoi(arguments.at(1));
    }
    return 0;
}

#ifdef _WIN32
extern "C" int wmain(int argc, wchar_t* argv[]) {
    _setmode(_fileno(stdout), _O_BINARY);
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        char utf8[1000];
        WideCharToMultiByte(CP_UTF8, 0, argv[i], -1, utf8, sizeof utf8, nullptr, nullptr);
        arguments.emplace_back(utf8);
    }
    return run(arguments);
}
#else
int main(int argc, char* argv[]) {
    return run(std::vector<std::string>(argv + 1, argv + argc));
}
#endif
