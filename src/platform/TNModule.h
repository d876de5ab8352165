#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

#include "platform/Export.h"
#include "platform/FormatText.h"

class CTNLocale;

/// One text of a module: a printf format. Entries of a table are ordered by ascending id.
struct ResourceEntry {
    std::uint32_t id;
    const char* text;
};

/// The texts of one language. 1033 is English (United States).
struct ResourceLanguage {
    std::uint32_t languageId;
    std::span<const ResourceEntry> entries;
};

/// A module under whose name messages are logged, with its table of texts. Constant after construction; may be shared
/// between threads. Borrows the name and the tables, which must outlive it.
class TN61131_API CTNModule {
 public:
    constexpr CTNModule(std::string_view name, std::span<const ResourceLanguage> languages) noexcept
        : name_(name), languages_(languages) {}

    [[nodiscard]] std::string_view GetName() const noexcept { return name_; }
    /// The text of an id in the module's first language; null when the table has none.
    [[nodiscard]] const char* FindText(std::uint32_t id) const noexcept;
    /// Copies the text for a locale (the first language where the locale's own is missing) into `buffer`, terminated
    /// and bounded by `size`. Returns the bytes copied; 0 for an id that is not in the table.
    unsigned int LoadResourceString(const CTNLocale& locale, std::uint32_t id, char* buffer, unsigned int size) const;
    /// The same with placeholders filled.
    template <typename... Args>
    unsigned int FormatResourceString(const CTNLocale& locale, char* buffer, unsigned int size, std::uint32_t id,
                                      const Args&... args) const {
        const std::initializer_list<FormatArg> list{FormatArg(args)...};
        return FormatResource(locale, buffer, size, id, FormatArgs(list.begin(), list.size()));
    }

 private:
    [[nodiscard]] const char* FindTextFor(const CTNLocale& locale, std::uint32_t id) const noexcept;
    unsigned int FormatResource(const CTNLocale& locale, char* buffer, unsigned int size, std::uint32_t id,
                                FormatArgs args) const;

    std::string_view name_;
    std::span<const ResourceLanguage> languages_;
};
