#include <lapwing/version.h>

#include <gtest/gtest.h>

#include <string>

#ifdef _WIN32
#include <windows.h>

#include <vector>
#endif

namespace {

TEST(Version, IsTheSameEverywhere) {
    EXPECT_STREQ(LAPWING_VERSION, LAPWING_TESTS_VERSION);
    EXPECT_EQ(std::to_string(LAPWING_VERSION_MAJOR) + "." + std::to_string(LAPWING_VERSION_MINOR) +
                  "." + std::to_string(LAPWING_VERSION_PATCH),
              LAPWING_TESTS_VERSION);
}

#ifdef _WIN32
std::string versionText(std::vector<char>& resource, const std::string& name) {
    void* text = nullptr;
    UINT length = 0;
    VerQueryValueA(resource.data(), ("\\StringFileInfo\\040904B0\\" + name).c_str(), &text,
                   &length);
    return length == 0 ? "" : static_cast<const char*>(text);
}

TEST(Version, IsToldByTheDll) {
    const char* const library = LAPWING_TESTS_LIBRARY;
    std::vector<char> resource(GetFileVersionInfoSizeA(library, nullptr));
    ASSERT_TRUE(GetFileVersionInfoA(library, 0, DWORD(resource.size()), resource.data()));
    for (const char* const name : {"ProductVersion", "FileVersion"}) {
        EXPECT_EQ(versionText(resource, name), LAPWING_VERSION) << name;
    }
    EXPECT_EQ(versionText(resource, "ProductName"), "Lapwing");
    EXPECT_NE(versionText(resource, "FileDescription"), "");
    EXPECT_EQ(versionText(resource, "OriginalFilename"), LAPWING_TESTS_LIBRARY);
    void* numbers = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueA(resource.data(), "\\", &numbers, &length));
    const auto* const info = static_cast<const VS_FIXEDFILEINFO*>(numbers);
    EXPECT_EQ(info->dwFileVersionMS, DWORD(LAPWING_VERSION_MAJOR << 16 | LAPWING_VERSION_MINOR));
    EXPECT_EQ(info->dwFileVersionLS, DWORD(LAPWING_VERSION_PATCH << 16));
}
#endif

}  // namespace
