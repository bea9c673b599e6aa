#include "system_file.h"

#include "text_table.h"

#include <system_error>
#include <utility>

namespace lapwing {

std::string displayName(const std::filesystem::path& file) {
    const auto text = file.u8string();
    return onOneLine(std::string(text.begin(), text.end()));
}

void throwSystemError(const std::filesystem::path& file, int reason) {
    throw std::system_error(reason, std::system_category(), displayName(file));
}

SystemFile::SystemFile(SystemFile&& other) noexcept : SystemFile() {
    std::swap(owned, other.owned);
}

SystemFile& SystemFile::operator=(SystemFile&& other) noexcept {
    std::swap(owned, other.owned);
    return *this;
}

}  // namespace lapwing
