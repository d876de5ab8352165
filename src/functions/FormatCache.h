#pragma once

#include <cstddef>
#include <list>
#include <string_view>

#include "platform/DataFormat.h"
#include "platform/Export.h"

/// The patterns of one context, parsed, with their formatters: a program that formats the same way in every scan parses
/// once. Used by one thread at a time.
class TN61131_API CFormatCache {
 public:
    /// Patterns kept of each kind; the one not used for longest makes room.
    static constexpr std::size_t kMaxPatterns = 64;

    /// The format of a pattern, valid until the next call; null for what is no pattern. `Format` is DateTimeFormat or
    /// DecimalFormat.
    template <typename Format>
    [[nodiscard]] const Format* Find(std::string_view pattern);
    /// How often a text had to be parsed.
    [[nodiscard]] std::size_t GetParseCount() const noexcept { return parseCount_; }

 private:
    template <typename Format>
    const Format* FindIn(std::list<Format>& formats, std::string_view pattern);

    std::list<DateTimeFormat> dateTimeFormats_;  ///< the last used in front
    std::list<DecimalFormat> decimalFormats_;
    std::size_t parseCount_ = 0;
};

template <>
TN61131_API const DateTimeFormat* CFormatCache::Find<DateTimeFormat>(std::string_view pattern);
template <>
TN61131_API const DecimalFormat* CFormatCache::Find<DecimalFormat>(std::string_view pattern);
