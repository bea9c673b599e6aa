#include <lapwing/kit/file_text.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

using namespace lapwing;

namespace {

TEST(FileText, GivesAnyBytesOneForm) {
    const std::pair<std::string, std::string> forms[] = {
        {"", ""},
        {"Hex:00", "Hex:00"},
        {"\x01\x7F\xC2\x80\xDF\xBF", "\x01\x7F\xC2\x80\xDF\xBF"},
        {"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80", "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80"},
        {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {"hex:", "hex:6865783a"},
        // Not UTF-8: a byte of nothing, parts, overlong forms, a surrogate, beyond the last.
        {"\xFF", "hex:ff"},
        {"a\x80", "hex:6180"},
        {"\xE2\x82", "hex:e282"},
        {"\xE2\x82z", "hex:e2827a"},
        {"\xC1\xBF", "hex:c1bf"},
        {"\xE0\x9F\xBF", "hex:e09fbf"},
        {"\xF0\x8F\xBF\xBF", "hex:f08fbfbf"},
        {"\xED\xA0\x80", "hex:eda080"},
        {"\xF4\x90\x80\x80", "hex:f4908080"}};
    for (const auto& [bytes, text] : forms) {
        EXPECT_EQ(toFileText(bytes), text);
        EXPECT_EQ(fromFileText(text), bytes);
    }
}

TEST(FileText, RefusesOtherForms) {
    for (const char* text : {"hex:", "hex:c3a4", "hex:fff", "hex:FF", "\xFF"}) {
        EXPECT_THROW((void)fromFileText(text), std::invalid_argument) << text;
    }
}

}  // namespace
