#include "support.h"

#include <lapwing/settings.h>

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace {

const std::string longText = "a text that does not fit a small buffer";
const auto samples = std::make_tuple(true, std::int32_t{-2147483647 - 1}, 0.1, longText,
                                     std::wstring(longText.begin(), longText.end()));
template <class V>
const V& sample = std::get<V>(samples);

template <class V>
struct SettingsOf : testing::Test {
    const V zero = V();
    DeveloperSettings::Setting<V> reader{"key"};
    DeveloperConfig::Item<V> item{"key", sample<V>};
};

using SettingTypes = testing::Types<bool, std::int32_t, double, std::string, std::wstring>;
TYPED_TEST_SUITE(SettingsOf, SettingTypes, );

TYPED_TEST(SettingsOf, YieldDefaultsAndDropWritesWithoutAProviderThatStores) {
    struct : DeveloperSettings::Provider {
        using Provider::setInstance;
    } bare;
    for (const bool isBareInstalled : {false, true}) {
        bare.setInstance(isBareInstalled ? &bare : nullptr);
        this->item.set(this->zero);
        this->item.clear();
        EXPECT_EQ(this->reader.value(), this->zero);
        EXPECT_EQ(this->item(), sample<TypeParam>);
        EXPECT_FALSE(this->reader.hasValue());
    }
    bare.setInstance(nullptr);
}

TYPED_TEST(SettingsOf, ReadAndWriteThroughTheProvider) {
    StoringProvider<TypeParam> provider;
    EXPECT_EQ(this->item.value(), sample<TypeParam>);
    this->item.set(this->zero);
    EXPECT_EQ(this->item(), this->zero);
    EXPECT_TRUE(this->reader.hasValue());
    this->item.set(sample<TypeParam>);
    EXPECT_EQ(this->reader.value(), sample<TypeParam>);
    this->item.clear();
    EXPECT_EQ(this->reader(), this->zero);
    EXPECT_FALSE(this->item.hasValue());
}

TYPED_TEST(SettingsOf, HaveNoDefaultOnceMovedFrom) {
    auto to = std::move(this->item);
    {
        StoringProvider<TypeParam> provider;
        provider.onRead = [] { ADD_FAILURE() << "asked without a default"; };
        EXPECT_THROW((void)this->item(), std::bad_function_call);
        this->item.set(this->zero);
        EXPECT_TRUE(this->item.hasValue());
    }
    auto& self = to;
    to = std::move(self);
    EXPECT_EQ(to(), sample<TypeParam>);
    this->item.name = "other";
    this->item = std::move(to);
    EXPECT_STREQ(this->item.name, "key");
    EXPECT_EQ(this->item(), sample<TypeParam>);
    EXPECT_THROW((void)to(), std::bad_function_call);
}

TEST(Provider, IsTheOneInstalledLastWhenAReadBegins) {
    DeveloperSettings::Integer reader("key");
    StoringProvider<std::int32_t> first;
    StoringProvider<std::int32_t> second;
    first.store["key"] = 1;
    second.store["key"] = 2;
    EXPECT_EQ(reader(), 2);
    first.setInstance(&first);
    auto copy = second;
    copy = second;
    reader.defaultValue = [] {
        StoringProvider<std::int32_t>::setInstance(nullptr);
        return 3;
    };
    EXPECT_EQ(reader(), 1);
    EXPECT_EQ(reader(), 3);
}

TEST(Settings, KeepTheKeyAndCopyTheDefault) {
    std::string text = "before";
    const DeveloperConfig::String item(longText.c_str(), text);
    text = "after";
    const DeveloperSettings::String copy = item;
    EXPECT_EQ(copy(), "before");
    EXPECT_EQ(copy.name, longText.c_str());
}

TEST(BuiltInSettings, HaveTheKeysAndDefaultsThatHostsRelyOn) {
    using namespace DeveloperSettings;
    using DeveloperConfig::enableTimingProfileLogging;
    EXPECT_EQ(Lines({developerMode.name, tradeshow.name, enableTimingProfileLogging.name,
                     imageDirectory.name}),
              Lines({"developerMode", "tradeshow", "enableTimingProfileLogging",
                     "logging.ImageDirectory"}));
    EXPECT_EQ(imageDirectory.name, imageDirectoryW.name);
    EXPECT_FALSE(developerMode() || tradeshow() || enableTimingProfileLogging());
    EXPECT_EQ(imageDirectory(), "");
    EXPECT_EQ(imageDirectoryW(), L"");
}

}  // namespace
