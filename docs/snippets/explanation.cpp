// Tells why a setting has its value.

#include <lapwing/kit/settings_layers.h>

#include <iostream>
#include <memory>

int main() {
    const auto arguments = std::make_shared<lapwing::ArgumentsLayer>(
        std::vector<std::string>{"view.scale=large", "net.retries=7"});
    const auto environment = std::make_shared<lapwing::EnvironmentLayer>("APP_");
    const auto memory = std::make_shared<lapwing::MemoryLayer>();
    lapwing::LayeredSettings settings(
        {arguments, environment, memory},
        [](const std::string& problem) { std::cout << "problem: " << problem << '\n'; });

    DeveloperConfig::Double scale{"view.scale", 1.0};
    scale.set(2.5);  // goes to the first layer that is writable
    std::cout << scale() << '\n' << lapwing::formatExplanation(settings.explain(scale));

    const DeveloperSettings::Integer retries{"net.retries"};
    const lapwing::ScopedSetting<std::int32_t> none(settings, "net.retries", 0);
    std::cout << retries() << '\n' << lapwing::formatExplanation(settings.explain(retries));
}
