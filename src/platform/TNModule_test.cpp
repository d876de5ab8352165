#include "platform/TNModule.h"

#include <array>
#include <string>

#include <gtest/gtest.h>

#include "platform/DataFormat.h"

namespace {

constexpr ResourceEntry kOther[] = {{1, "eins"}, {2, "zwei"}, {5, "f\xC3\xBCnf"}};
constexpr ResourceEntry kEnglish[] = {{1, "one"}, {2, "two %d"}, {9, "nine"}};
constexpr std::uint32_t kUnknownLanguage = 99999;

std::string Load(const CTNModule& module, std::string_view tag, std::uint32_t id, unsigned int size = 64) {
    std::array<char, 64> buffer{};
    const unsigned int written = module.LoadResourceString(CTNLocale(tag), id, buffer.data(), size);
    return {buffer.data(), written};
}

TEST(CTNModule, LocaleChoosesTheLanguageAndTheFirstFillsGaps) {
    constexpr ResourceLanguage kLanguages[] = {{kUnknownLanguage, kOther}, {1033, kEnglish}};
    const CTNModule module("test", kLanguages);
    EXPECT_EQ(Load(module, "en-US", 1), "one");
    EXPECT_EQ(Load(module, "fr-FR", 1), "eins");
    EXPECT_EQ(Load(module, "en-US", 5), "f\xC3\xBCnf") << "missing in English";
    EXPECT_EQ(Load(module, "en-US", 9), "nine");
    EXPECT_EQ(Load(module, "fr-FR", 9), "") << "missing in the first language";
    EXPECT_STREQ(module.FindText(1), "eins");
    EXPECT_EQ(module.FindText(9), nullptr);
}

TEST(CTNModule, CutsBetweenCharacters) {
    constexpr ResourceLanguage kLanguages[] = {{kUnknownLanguage, kOther}};
    const CTNModule module("test", kLanguages);
    EXPECT_EQ(Load(module, "", 5, 3), "f");
    EXPECT_EQ(Load(module, "", 5, 4), "f\xC3\xBC");
    EXPECT_EQ(Load(module, "", 5, 0), "");
}

TEST(CTNModule, ModuleWithoutLanguagesHasNoTexts) {
    const CTNModule module("empty", {});
    EXPECT_EQ(module.FindText(1), nullptr);
    EXPECT_EQ(Load(module, "en-US", 1), "");
}

}  // namespace
