#include <lapwing/version.h>

#include <gtest/gtest.h>

#include <string>

TEST(Version, IsTheSameEverywhere) {
    EXPECT_STREQ(LAPWING_VERSION, LAPWING_TESTS_VERSION);
    EXPECT_EQ(std::to_string(LAPWING_VERSION_MAJOR) + "." + std::to_string(LAPWING_VERSION_MINOR) +
                  "." + std::to_string(LAPWING_VERSION_PATCH),
              LAPWING_TESTS_VERSION);
}
