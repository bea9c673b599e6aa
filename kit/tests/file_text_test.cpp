#include <lapwing/kit/file_text.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>
#include <vector>

using lapwing::fromFileText;
using lapwing::toFileText;

namespace {

bool isRefused(const std::string& text) {
    try {
        static_cast<void>(fromFileText(text));
    } catch (const std::invalid_argument&) {
        return true;
    }
    return false;
}

}  // namespace

TEST(FileText, GivesAnyBytesOneForm) {
    for (const std::string text :
         {"", "hex", "Hex:00", "\n\x7F\xC2\x80\xDF\xBF", "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80",
          "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(toFileText(text) + fromFileText(text), text + text);
    }
    // No first byte, parts, overlong forms, surrogates, beyond the last.
    const std::vector<std::pair<std::string, std::string>> forms = {
        {"hex:", "hex:6865783a"},
        {"\xFF", "hex:ff"},
        {"a\x80", "hex:6180"},
        {"\xE2\x82", "hex:e282"},
        {"\xE2\x82z", "hex:e2827a"},
        {"\xC1\xBF", "hex:c1bf"},
        {"\xE0\x9F\xBF", "hex:e09fbf"},
        {"\xF0\x8F\xBF\xBF", "hex:f08fbfbf"},
        {"\xED\xA0\x80", "hex:eda080"},
        {"\xED\xBF\xBF", "hex:edbfbf"},
        {"\xF4\x90\x80\x80", "hex:f4908080"},
        {"\xF5\x80\x80\x80", "hex:f5808080"}};
    for (const auto& [bytes, text] : forms) {
        EXPECT_EQ(toFileText(bytes), text);
        EXPECT_EQ(fromFileText(text), bytes);
    }
}

TEST(FileText, RefusesOtherForms) {
    for (const std::string text : {"hex:", "hex:61", "hex:c3a4", "hex:f", "hex:fff", "hex:FF",
                                   "hex:f ", "hex:0xff", "\xFF", "\xC0\x80"}) {
        EXPECT_TRUE(isRefused(text)) << text;
    }
}
