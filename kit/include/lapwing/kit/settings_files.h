/// @file
/// Settings from a file.

#ifndef LAPWING_KIT_SETTINGS_FILES_H
#define LAPWING_KIT_SETTINGS_FILES_H

#include <lapwing/kit/settings_layers.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace lapwing {

/// A JSON file of settings:
///
///     {
///         // Comments are allowed.
///         "view.showGrid": true,
///         "net": {"retries": 5, "proxy": "none"}
///     }
///
/// It is one object. The keys of objects within are joined with dots, so the file above has
/// net.retries. A value is true, false, a number, whose text is as it is written, or a text; null
/// and arrays are reported as problems and do not count. A key that is there twice makes the whole
/// file wrong.
///
/// Changes are noticed: at most every 250 ms, a read looks at the file's time and size, and loads
/// the file if they have changed. If the file is then wrong or gone, as in the middle of an
/// editor's save, the last good values stay, a problem is reported once, and later looks try again.
/// No reader sees a part of a file. While one thread loads the file, the others read the previous
/// values; only the first loading is waited for. A file that was never there counts as empty.
///
/// A write saves the file as one flat, sorted object, as atomically as saveRecordings() does; what
/// other programs have written meanwhile is kept, and so are null and arrays. If the file is gone,
/// the last good values are saved with the new one. A write that changes nothing does not touch the
/// file. A file that has comments is never overwritten, nor is one that is wrong: the write is then
/// dropped and reported as a problem, and so is one that fails, and a key or text that is not
/// UTF-8.
///
/// A file is wrong, too, if it is not UTF-8, is larger than 16 MiB, or nests more than 100 deep.
///
/// Thread safety: as for SettingsLayer.
class JsonFileLayer final : public SettingsLayer {
public:
    /// Reads nothing yet. A relative name counts from the folder that is the current one now.
    /// Throws std::filesystem::filesystem_error if the name is empty.
    explicit JsonFileLayer(const std::filesystem::path& file);
    ~JsonFileLayer() override;

    /// The file's name as it was given, on one line.
    [[nodiscard]] std::string name() const override;
    [[nodiscard]] std::optional<std::string> find(const std::string& key) const override;

    /// FILE:LINE, where the line is that of the key.
    [[nodiscard]] std::string origin(const std::string& key) const override;
    [[nodiscard]] bool isWritable() const noexcept override;
    void set(const std::string& key, const SettingText& value) override;
    void clear(const std::string& key) override;

    /// Until it is called, problems are dropped.
    void setProblemHandler(const ProblemHandler& handler) override;

private:
    struct State;
    std::unique_ptr<State> state;
};

}  // namespace lapwing

#endif  // LAPWING_KIT_SETTINGS_FILES_H
