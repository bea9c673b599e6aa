#include "support.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

namespace {

template <class V>
const V sample{};
template <>
const bool sample<bool> = true;
template <>
const std::int32_t sample<std::int32_t> = -2147483647 - 1;
template <>
const double sample<double> = 0.1;
template <>
const std::string sample<std::string> = "a text that does not fit a small buffer";
template <>
const std::wstring sample<std::wstring> = L"a text that does not fit a small buffer";

template <class V>
class SettingsOf : public testing::Test {
protected:
    using Reader = DeveloperSettings::Setting<V>;
    using Item = DeveloperConfig::Item<V>;
};

using SettingTypes = testing::Types<bool, std::int32_t, double, std::string, std::wstring>;
TYPED_TEST_SUITE(SettingsOf, SettingTypes, );

TYPED_TEST(SettingsOf, YieldDefaultsAndDropWritesWithoutAProvider) {
    typename TestFixture::Reader reader("key");
    typename TestFixture::Item item("key", sample<TypeParam>);
    item.set(TypeParam());
    item.clear();
    EXPECT_EQ(reader.value(), TypeParam());
    EXPECT_EQ(reader(), TypeParam());
    EXPECT_EQ(item.value(), sample<TypeParam>);
    EXPECT_EQ(item(), sample<TypeParam>);
    EXPECT_FALSE(reader.hasValue());
    EXPECT_FALSE(item.hasValue());
}

TYPED_TEST(SettingsOf, ReadAndWriteThroughTheProvider) {
    const typename TestFixture::Reader reader("key");
    typename TestFixture::Item item("key", sample<TypeParam>);
    StoringProvider provider;
    EXPECT_EQ(item.value(), sample<TypeParam>);
    EXPECT_EQ(std::get<TypeParam>(provider.offered), sample<TypeParam>);
    EXPECT_EQ(reader(), TypeParam());
    EXPECT_EQ(std::get<TypeParam>(provider.offered), TypeParam());

    item.set(TypeParam());
    EXPECT_EQ(item(), TypeParam());
    EXPECT_TRUE(item.hasValue());
    item.set(sample<TypeParam>);
    EXPECT_EQ(reader.value(), sample<TypeParam>);
    EXPECT_TRUE(reader.hasValue());

    item.clear();
    EXPECT_EQ(reader.value(), TypeParam());
    EXPECT_FALSE(reader.hasValue());
    EXPECT_EQ(provider.calls,
              Lines({"getValue", "getValue", "setValue", "getValue", "exists", "setValue",
                     "getValue", "exists", "clear", "getValue", "exists"}));
}

TYPED_TEST(SettingsOf, HaveNoDefaultOnceMovedFrom) {
    const auto expectMoved = [](auto from) {
        auto to = std::move(from);
        EXPECT_THROW((void)from.value(), std::bad_function_call);
        EXPECT_THROW((void)from(), std::bad_function_call);
        EXPECT_FALSE(from.hasValue());
        StoringProvider provider;
        EXPECT_THROW((void)from.value(), std::bad_function_call);
        EXPECT_EQ(provider.calls, Lines());
        EXPECT_FALSE(from.hasValue());
        EXPECT_EQ(provider.calls, Lines({"exists"}));

        const char* const key = to.name;
        const TypeParam before = to();
        auto& self = to;
        to = std::move(self);
        EXPECT_EQ(to(), before);
        from.name = "other";
        from = std::move(to);
        EXPECT_EQ(from.name, key);
        EXPECT_EQ(from(), before);
        EXPECT_THROW((void)to(), std::bad_function_call);
    };
    expectMoved(typename TestFixture::Reader("key"));
    expectMoved(typename TestFixture::Item("key", sample<TypeParam>));

    typename TestFixture::Item item("key", TypeParam());
    const auto taken = std::move(item);
    StoringProvider provider;
    item.set(sample<TypeParam>);
    EXPECT_EQ(taken(), sample<TypeParam>);
    item.clear();
    EXPECT_FALSE(taken.hasValue());
}

TYPED_TEST(SettingsOf, AreUntouchedByAProviderThatOverridesNothing) {
    struct Bare : DeveloperSettings::Provider {
        static void install(Provider* provider) { setInstance(provider); }
    } bare;
    Bare::install(&bare);
    typename TestFixture::Item item("key", sample<TypeParam>);
    item.set(TypeParam());
    EXPECT_EQ(item(), sample<TypeParam>);
    EXPECT_FALSE(item.hasValue());
    item.clear();
    Bare::install(nullptr);
}

TYPED_TEST(SettingsOf, PassOnWhatTheProviderThrows) {
    StoringProvider provider;
    provider.onCall = [] { throw std::runtime_error("store is gone"); };
    typename TestFixture::Item item("key", sample<TypeParam>);
    EXPECT_THROW((void)item.value(), std::runtime_error);
    EXPECT_THROW((void)item.hasValue(), std::runtime_error);
    EXPECT_THROW(item.set(TypeParam()), std::runtime_error);
    EXPECT_THROW(item.clear(), std::runtime_error);
}

TEST(Provider, IsTheOneInstalledLastUntilItIsUninstalled) {
    const DeveloperSettings::Integer reader("key");
    StoringProvider first;
    StoringProvider second;
    first.store["key"] = 1;
    second.store["key"] = 2;
    EXPECT_EQ(reader(), 2);
    EXPECT_EQ(first.calls, Lines());
    StoringProvider copy = first;
    copy = first;
    StoringProvider::install(&first);
    EXPECT_EQ(reader(), 1);
    const StoringProvider another = second;
    EXPECT_EQ(reader(), 1);
    StoringProvider::install(nullptr);
    EXPECT_EQ(reader(), 0);
}

TEST(Provider, IsChosenBeforeTheDefaultIsMade) {
    StoringProvider provider;
    provider.store["key"] = true;
    DeveloperSettings::Boolean reader("key");
    reader.defaultValue = [] {
        StoringProvider::install(nullptr);
        return false;
    };
    EXPECT_TRUE(reader());
    EXPECT_FALSE(reader());
}

TEST(Settings, KeepTheKeyAndCopyTheDefault) {
    const char key[] = "key";
    std::string text = "before";
    const DeveloperConfig::String item(key, text);
    text = "after";
    const DeveloperSettings::String copy = item;
    EXPECT_EQ(copy(), "before");
    EXPECT_EQ(copy.name, key);
}

TEST(BuiltInSettings, HaveTheKeysAndDefaultsThatHostsRelyOn) {
    EXPECT_STREQ(DeveloperSettings::developerMode.name, "developerMode");
    EXPECT_STREQ(DeveloperSettings::tradeshow.name, "tradeshow");
    EXPECT_STREQ(DeveloperConfig::enableTimingProfileLogging.name, "enableTimingProfileLogging");
    EXPECT_STREQ(DeveloperSettings::imageDirectory.name, "logging.ImageDirectory");
    EXPECT_EQ(DeveloperSettings::imageDirectory.name, DeveloperSettings::imageDirectoryW.name);
    EXPECT_FALSE(DeveloperSettings::developerMode());
    EXPECT_FALSE(DeveloperSettings::tradeshow());
    EXPECT_FALSE(DeveloperConfig::enableTimingProfileLogging());
    EXPECT_EQ(DeveloperSettings::imageDirectory(), "");
    EXPECT_EQ(DeveloperSettings::imageDirectoryW(), L"");
}

}  // namespace
