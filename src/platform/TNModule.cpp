#include "platform/TNModule.h"

#include <algorithm>
#include <string>

#include "platform/DataFormat.h"

namespace {

/// The locales of the numbered languages.
struct LanguageLocale {
    std::uint32_t languageId;
    std::string_view tag;
};
constexpr LanguageLocale kLanguageLocales[] = {{1033, "en-US"}};

constexpr char ToLowerAscii(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Language tags are compared without regard to case.
bool EqualTags(std::string_view left, std::string_view right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return ToLowerAscii(a) == ToLowerAscii(b); });
}

bool IsLanguageOf(std::uint32_t languageId, std::string_view tag) noexcept {
    return std::any_of(std::begin(kLanguageLocales), std::end(kLanguageLocales), [=](const LanguageLocale& row) {
        return row.languageId == languageId && EqualTags(row.tag, tag);
    });
}

const char* FindEntry(std::span<const ResourceEntry> entries, std::uint32_t id) noexcept {
    const auto entry = std::lower_bound(entries.begin(), entries.end(), id,
                                        [](const ResourceEntry& row, std::uint32_t wanted) { return row.id < wanted; });
    return entry != entries.end() && entry->id == id ? entry->text : nullptr;
}

}  // namespace

const char* CTNModule::FindText(std::uint32_t id) const noexcept {
    return languages_.empty() ? nullptr : FindEntry(languages_.front().entries, id);
}

const char* CTNModule::FindTextFor(const CTNLocale& locale, std::uint32_t id) const noexcept {
    for (const ResourceLanguage& language : languages_) {
        if (!IsLanguageOf(language.languageId, locale.GetTag())) continue;
        if (const char* const text = FindEntry(language.entries, id)) return text;
    }
    return FindText(id);
}

unsigned int CTNModule::LoadResourceString(const CTNLocale& locale, std::uint32_t id, char* buffer,
                                           unsigned int size) const {
    const char* const text = FindTextFor(locale, id);
    return CopyBounded(buffer, size, text == nullptr ? std::string_view() : std::string_view(text));
}

unsigned int CTNModule::FormatResource(const CTNLocale& locale, char* buffer, unsigned int size, std::uint32_t id,
                                       FormatArgs args) const {
    const char* const text = FindTextFor(locale, id);
    std::string formatted;
    if (text != nullptr) AppendFormatted(formatted, text, args);
    return CopyBounded(buffer, size, formatted);
}
