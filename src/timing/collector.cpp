#include <lapwing/timing_profiles.h>

TimingProfileCollector::TimingProfileCollector() = default;
TimingProfileCollector::~TimingProfileCollector() = default;

void TimingProfileCollector::operator()(const std::string& name, Milliseconds duration) {
    collectSample(name, duration);
}

void TimingProfileCollector::collectSample(const std::string& name, Milliseconds duration) {
    const std::lock_guard lock(mutex);
    profile.samples[name].push_back(duration);
}

void TimingProfileCollector::collectNote(const std::string& key, const std::string& text) {
    collectNotes({{key, text}});
}

void TimingProfileCollector::collectNotes(
    const std::unordered_map<std::string, std::string>& entries) {
    const std::lock_guard lock(mutex);
    profile.notes.insert(entries.begin(), entries.end());
}

TimingProfile TimingProfileCollector::extractProfile() const {
    const std::lock_guard lock(mutex);
    return profile;
}
