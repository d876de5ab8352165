#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "platform/Export.h"

/// One argument of a formatted text. It knows its own type, so that no text can misread it. Borrows texts: it must not
/// outlive the call it is made for.
class FormatArg {
 public:
    enum class Kind : std::uint8_t { Signed, Unsigned, Double, Text };

    template <std::signed_integral T>
    constexpr FormatArg(T value) noexcept : kind_(Kind::Signed), signed_(value) {}
    template <std::unsigned_integral T>
    constexpr FormatArg(T value) noexcept : kind_(Kind::Unsigned), unsigned_(value) {}
    template <std::floating_point T>
    constexpr FormatArg(T value) noexcept : kind_(Kind::Double), double_(static_cast<double>(value)) {}
    template <typename T>
    requires std::is_enum_v<T>
    constexpr FormatArg(T value) noexcept : FormatArg(static_cast<std::underlying_type_t<T>>(value)) {}
    constexpr FormatArg(std::string_view text) noexcept : kind_(Kind::Text), text_(text) {}
    FormatArg(const std::string& text) noexcept : FormatArg(std::string_view(text)) {}
    /// A null pointer prints as an empty text.
    constexpr FormatArg(const char* text) noexcept
        : FormatArg(text == nullptr ? std::string_view() : std::string_view(text)) {}

    [[nodiscard]] constexpr Kind GetKind() const noexcept { return kind_; }
    /// The integer value, whatever its sign; 0 for a text, truncated and saturated for a double.
    [[nodiscard]] TN61131_API std::int64_t AsSigned() const noexcept;
    [[nodiscard]] TN61131_API std::uint64_t AsUnsigned() const noexcept;
    [[nodiscard]] TN61131_API double AsDouble() const noexcept;
    /// The text of a text argument; empty for a number.
    [[nodiscard]] constexpr std::string_view AsText() const noexcept {
        return kind_ == Kind::Text ? text_ : std::string_view();
    }

 private:
    Kind kind_;
    union {
        std::int64_t signed_;
        std::uint64_t unsigned_;
        double double_;
        std::string_view text_;
    };
};

using FormatArgs = std::span<const FormatArg>;

/// Appends `format` to `out` with its placeholders filled in order. Placeholders are those of C's printf: flags, width,
/// precision and the conversions d i u x X o c lc s f F e E g G and %%. A length of `h` (`hh`) reduces an integer to
/// 16 (8) bits, signed or unsigned as the conversion says; without a length d, u, x reduce to 32 bits; `l`, `ll` and
/// `z` take all 64. `lc` takes a code point. A placeholder without an argument prints nothing, an argument of another
/// kind prints in the natural form of its own kind, and an unknown placeholder prints as it stands: no text and no
/// argument can cause undefined behaviour. Widths and precisions beyond 4095 count as 4095; the precision of a text is
/// in bytes and never cuts a UTF-8 character. The locale of the C library does not matter.
TN61131_API void AppendFormatted(std::string& out, std::string_view format, FormatArgs args);

/// The formatted text by value.
template <typename... Args>
[[nodiscard]] std::string FormatText(std::string_view format, const Args&... args) {
    std::string out;
    const std::initializer_list<FormatArg> list{FormatArg(args)...};
    AppendFormatted(out, format, FormatArgs(list.begin(), list.size()));
    return out;
}

/// Copies at most `size` - 1 bytes of `text` (never part of a UTF-8 character) and a terminating zero into `buffer`.
/// Returns the number of bytes before the zero; writes nothing and returns 0 when `size` is 0.
TN61131_API unsigned int CopyBounded(char* buffer, unsigned int size, std::string_view text);

/// Bounded formatting into a caller's buffer, always terminated unless `size` is 0. Returns the number of bytes before
/// the zero.
template <typename... Args>
unsigned int tn_sprintf(char* buffer, unsigned int size, std::string_view format, const Args&... args) {
    return CopyBounded(buffer, size, FormatText(format, args...));
}
