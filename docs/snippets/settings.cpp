// A host that keeps its developer options in memory, and a setting that is stored there.

#include <lapwing/settings.h>

#include <iostream>
#include <map>
#include <mutex>
#include <string>

// Stores integers. Settings of other types keep their defaults.
class Options final : public DeveloperSettings::Provider {
public:
    Options() { setInstance(this); }
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;
    ~Options() override { setInstance(nullptr); }

    using Provider::getValue;
    std::int32_t getValue(const char* key, std::int32_t fallback) const override {
        const std::lock_guard lock(mutex);
        const auto found = store.find(key);
        return found == store.end() ? fallback : found->second;
    }

    bool exists(const char* key) const override {
        const std::lock_guard lock(mutex);
        return store.count(key) != 0;
    }

    using Provider::setValue;
    void setValue(const char* key, std::int32_t value) override {
        const std::lock_guard lock(mutex);
        store[key] = value;
    }

    void clear(const char* key) override {
        const std::lock_guard lock(mutex);
        store.erase(key);
    }

private:
    mutable std::mutex mutex;
    std::map<std::string, std::int32_t> store;
};

int main() {
    DeveloperConfig::Integer retries{"net.retries", 3};
    retries.set(4);
    std::cout << "no provider: " << retries() << '\n';

    Options options;
    std::cout << "nothing stored: " << retries() << '\n';
    retries.set(5);
    std::cout << "stored: " << retries() << '\n';

    const DeveloperSettings::Integer sameKey{"net.retries"};
    std::cout << "another object with this key: " << sameKey() << '\n';
    retries.clear();
    std::cout << "cleared: " << retries() << " and " << sameKey() << '\n';
}
