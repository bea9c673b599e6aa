// Reads settings from a file; the environment overrides them.

#include <lapwing/kit/settings_files.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>

int main() {
    const auto file = std::filesystem::temp_directory_path() / "lapwing-settings-example.json";
    std::ofstream(file) << R"({
    // What this bench needs.
    "net": {"retries": 5, "proxy": "none"}
})";
#ifdef _WIN32
    _putenv_s("APP_NET_PROXY", "proxy.example:8080");
#else
    setenv("APP_NET_PROXY", "proxy.example:8080", 1);
#endif

    const auto environment = std::make_shared<lapwing::EnvironmentLayer>("APP_");
    const auto settings = std::make_shared<lapwing::JsonFileLayer>(file);
    const lapwing::LayeredSettings installed({environment, settings});

    // Anywhere in the host, and live: the file may change while it runs.
    const DeveloperConfig::Integer retries{"net.retries", 3};
    const DeveloperSettings::String proxy{"net.proxy"};
    const DeveloperSettings::Boolean verbose{"net.verbose"};
    std::cout << retries() << " retries through " << proxy() << ", "
              << (verbose() ? "verbose" : "quiet") << '\n';
    std::filesystem::remove(file);
}
