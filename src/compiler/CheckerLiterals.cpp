#include <algorithm>
#include <charconv>
#include <cmath>

#include "compiler/BodyChecker.h"

// Literals (IEC 61131-3, 6.3). Their texts are read by the parsers of the machine, so that both mean the same.

namespace tn61131::st {

namespace {

[[nodiscard]] bool HasPrefix(std::string_view text) noexcept {
    return !text.empty() && (text[0] < '0' || text[0] > '9') && text[0] != '\'' && text[0] != '"' &&
           text.find('#') != std::string_view::npos;
}

[[nodiscard]] int DigitOf(char c) noexcept {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return 99;
}

/// The digits of a radix, underscores skipped; false when a digit is wrong or 64 bits do not hold the number.
[[nodiscard]] bool ReadDigits(std::string_view digits, unsigned radix, std::uint64_t& value) noexcept {
    value = 0;
    bool isAny = false;
    for (const char c : digits) {
        if (c == '_') continue;
        const int digit = DigitOf(c);
        if (digit >= static_cast<int>(radix)) return false;
        if (__builtin_mul_overflow(value, radix, &value)) return false;
        if (__builtin_add_overflow(value, static_cast<unsigned>(digit), &value)) return false;
        isAny = true;
    }
    return isAny;
}

[[nodiscard]] bool EqualsIgnoringCase(std::string_view left, std::string_view right) noexcept {
    return std::ranges::equal(left, right, [](char a, char b) { return (a | 0x20) == (b | 0x20); });
}

}  // namespace

Expr* BodyChecker::UntypedFromInteger(bool negative, std::uint64_t magnitude, bool based, SourceRange range) {
    constexpr std::uint64_t kMostNegative = std::uint64_t{1} << 63;
    ElementaryType type = ElementaryType::ULInt;
    if (based && !negative) {
        type = magnitude <= 0xFFFFFFFF ? ElementaryType::DWord : ElementaryType::LWord;
    } else if (magnitude < kMostNegative || (negative && magnitude == kMostNegative)) {
        const auto value = static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude);
        type = value == static_cast<std::int32_t>(value) ? ElementaryType::DInt : ElementaryType::LInt;
    } else if (negative) {
        return Fail(DiagnosticCode::ValueOutOfRange, range, {SourceText(range), "LINT"});
    }
    CValue value;
    value.SetInteger(static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude), type);
    return NewConstant(Elementary(type), std::move(value), range, true);
}

Expr* BodyChecker::CheckInteger(const ast::LiteralExpr& literal) {
    std::string_view digits = literal.text;
    unsigned radix = 10;
    const std::size_t hash = digits.find('#');
    if (hash != std::string_view::npos) {
        const std::string_view base = digits.substr(0, hash);
        radix = 0;
        std::from_chars(base.data(), base.data() + base.size(), radix);
        digits.remove_prefix(hash + 1);
    }
    std::uint64_t magnitude = 0;
    const bool isKnownRadix = radix == 2 || radix == 8 || radix == 10 || radix == 16;
    if (!isKnownRadix) {
        return Fail(DiagnosticCode::InvalidLiteral, literal.range,
                    {"'" + std::string(literal.text) + "': the base of a number is 2, 8, 10 or 16"});
    }
    if (!ReadDigits(digits, radix, magnitude)) {
        return Fail(DiagnosticCode::InvalidLiteral, literal.range,
                    {"'" + std::string(literal.text) + "' is no number of 64 bits"});
    }
    return UntypedFromInteger(false, magnitude, radix != 10, literal.range);
}

Expr* BodyChecker::CheckTimeLiteral(const ast::LiteralExpr& literal) {
    // The machine's times count milliseconds; finer units are added up here.
    std::string text(literal.text);
    const std::size_t hash = text.find('#');
    const std::string_view body = std::string_view(text).substr(hash == std::string::npos ? 0 : hash + 1);
    std::string kept;
    double nanoseconds = 0;
    bool isFine = false;
    for (std::size_t i = 0; i < body.size();) {
        std::size_t number = i;
        while (number < body.size() && !std::isalpha(static_cast<unsigned char>(body[number])))
            ++number;
        std::size_t unit = number;
        while (unit < body.size() && std::isalpha(static_cast<unsigned char>(body[unit])))
            ++unit;
        const std::string_view name = body.substr(number, unit - number);
        double factor = 0;
        if (EqualsIgnoringCase(name, "us")) factor = 1e3;
        if (EqualsIgnoringCase(name, "ns")) factor = 1;
        if (factor == 0) {
            kept += body.substr(i, unit - i);
        } else {
            std::string digits;
            for (const char c : body.substr(i, number - i)) {
                if (c == '-') kept.insert(kept.begin(), '-');
                if ((c >= '0' && c <= '9') || c == '.') digits += c;
            }
            double value = 0;
            std::from_chars(digits.data(), digits.data() + digits.size(), value);
            nanoseconds += value * factor;
            isFine = true;
        }
        if (unit == i) break;
        i = unit;
    }
    if (isFine) {
        constexpr double kNanosecondsPerMillisecond = 1e6;
        if (std::fmod(nanoseconds, kNanosecondsPerMillisecond) != 0)
            project_.diagnostics.Report(DiagnosticCode::TimeRounded, literal.range);
        text = "T#" + kept;
        if (text == "T#" || text == "T#-" || nanoseconds >= kNanosecondsPerMillisecond) {
            text += std::to_string(static_cast<std::int64_t>(nanoseconds / kNanosecondsPerMillisecond)) + "ms";
        }
    }
    CErrorLog log;
    CValue value;
    if (!value.StringToTime(log, ErrorLocationNull::Get(), text.c_str()))
        return Fail(DiagnosticCode::InvalidLiteral, literal.range, {log.GetEntries().back().text});
    return NewConstant(Elementary(ElementaryType::Time), std::move(value), literal.range);
}

Expr* BodyChecker::CheckLiteral(const ast::LiteralExpr& literal) {
    ElementaryType wanted = ElementaryType::Undefined;
    bool isUntyped = false;
    switch (literal.literal) {
        case ast::LiteralKind::Integer:
            if (!HasPrefix(literal.text)) return CheckInteger(literal);
            break;
        case ast::LiteralKind::Bool:
            if (!HasPrefix(literal.text)) {
                return NewConstant(project_.types.Bool(), CValue(EqualsIgnoringCase(literal.text, "TRUE")),
                                   literal.range);
            }
            break;
        case ast::LiteralKind::Null: {
            CValue null;
            null.SetAddress(0, 0, 0);
            return NewConstant(project_.types.Null(), std::move(null), literal.range);
        }
        case ast::LiteralKind::Real:
            isUntyped = !HasPrefix(literal.text);
            wanted = isUntyped ? ElementaryType::LReal : wanted;
            break;
        case ast::LiteralKind::String:
            isUntyped = !HasPrefix(literal.text);
            wanted = ElementaryType::String;
            break;
        case ast::LiteralKind::WString:
            isUntyped = !HasPrefix(literal.text);
            wanted = ElementaryType::WString;
            break;
        case ast::LiteralKind::Char: wanted = ElementaryType::Char; break;
        case ast::LiteralKind::WChar: wanted = ElementaryType::WChar; break;
        case ast::LiteralKind::Time: return CheckTimeLiteral(literal);
        case ast::LiteralKind::Date: wanted = ElementaryType::Date; break;
        case ast::LiteralKind::DateAndTime: wanted = ElementaryType::DateAndTime; break;
        case ast::LiteralKind::TimeOfDay: wanted = ElementaryType::TimeOfDay; break;
    }
    CErrorLog log;
    CValue value;
    if (!value.SetFromText(log, ErrorLocationNull::Get(), std::string(literal.text), wanted)) {
        const std::string reason = log.GetEntries().empty() ? "'" + std::string(literal.text) + "' is no literal"
                                                            : log.GetEntries().back().text;
        return Fail(DiagnosticCode::InvalidLiteral, literal.range, {reason});
    }
    const ElementaryType type = value.GetType();
    const bool overflows = (type == ElementaryType::Real && std::isinf(value.GetPayload<float>())) ||
                           (type == ElementaryType::LReal && std::isinf(value.GetPayload<double>()));
    if (overflows && literal.literal == ast::LiteralKind::Real)
        return Fail(DiagnosticCode::ValueOutOfRange, literal.range,
                    {std::string(literal.text), Text(Elementary(type))});
    if (type == ElementaryType::String || type == ElementaryType::WString) {
        const bool isWide = type == ElementaryType::WString;
        const unsigned units = isWide ? value.GetRawDataSize() / 2 - 1 : value.GetRawDataSize() - 2;
        const auto capacity = static_cast<std::uint16_t>(std::max(1U, units));
        return NewConstant(project_.types.String(type, capacity), std::move(value), literal.range, isUntyped);
    }
    return NewConstant(Elementary(type), std::move(value), literal.range, isUntyped);
}

Expr* BodyChecker::CheckInitializer(const ast::Expr& expression, const Type* wanted) {
    if (wanted == nullptr || !IsAggregate(wanted)) {
        if (wanted != nullptr && wanted->kind == TypeKind::Error) return Error(expression.range);
        return Fail(DiagnosticCode::TypeMismatch, expression.range,
                    {wanted == nullptr ? std::string("a single value") : Text(wanted), "a list of values"});
    }
    const InitialValue* initial = declarations_->CheckInitial(expression, wanted, context_.scope);
    if (initial == nullptr) return Error(expression.range);
    const std::span<unsigned char> bytes = project_.arena.NewArray<unsigned char>(wanted->size);
    declarations_->WriteInitial(wanted, initial, bytes);
    return New(AggregateConstantExpr{{ExprKind::AggregateConstant, wanted, expression.range}, bytes});
}

}  // namespace tn61131::st
