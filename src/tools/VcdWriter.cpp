#include "tools/VcdWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "platform/FormatText.h"
#include "platform/TextOutput.h"
#include "value/TypeTable.h"
#include "value/Value.h"

namespace tn61131 {
namespace {

enum class Shape { Wire, Real, String };

Shape ShapeOf(ElementaryType type) {
    switch (type) {
        case ElementaryType::Bool:
        case ElementaryType::SInt:
        case ElementaryType::USInt:
        case ElementaryType::Byte:
        case ElementaryType::Int:
        case ElementaryType::UInt:
        case ElementaryType::Word:
        case ElementaryType::DInt:
        case ElementaryType::UDInt:
        case ElementaryType::DWord:
        case ElementaryType::LInt:
        case ElementaryType::ULInt:
        case ElementaryType::LWord:
        case ElementaryType::Char:
        case ElementaryType::WChar: return Shape::Wire;
        case ElementaryType::Real:
        case ElementaryType::LReal:
        case ElementaryType::Time: return Shape::Real;
        default: return Shape::String;
    }
}

unsigned int WidthOf(ElementaryType type) {
    return type == ElementaryType::Bool ? 1 : 8U * GetTypeInfo(type).size;
}

/// Identifiers of printable characters, shortest first: "!" to "~", then two of them, and so on.
std::string IdentifierCode(std::size_t index) {
    constexpr char kFirst = '!';
    constexpr std::size_t kCharacters = '~' - kFirst + 1;
    std::string code;
    for (;; index = index / kCharacters - 1) {
        code += static_cast<char>(kFirst + static_cast<char>(index % kCharacters));
        if (index < kCharacters) return code;
    }
}

/// Names end at white space, and brackets at their end would mean a bit of a vector.
std::string ReferenceName(std::string_view name) {
    std::string text(name);
    for (char& character : text) {
        if (static_cast<unsigned char>(character) <= ' ') character = '_';
        if (character == '[') character = '(';
        if (character == ']') character = ')';
    }
    return text;
}

/// A string ends at white space: that, the backslash and control characters become \xHH.
std::string EscapeString(std::string_view text) {
    std::string escaped;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte <= ' ' || byte == '\\' || byte == 0x7F) {
            escaped += FormatText("\\x%02X", static_cast<unsigned int>(byte));
        } else {
            escaped += character;
        }
    }
    return escaped;
}

/// Two's complement without leading zeros, with which readers extend.
std::string VectorText(const CValue& value, unsigned int width) {
    const auto bits = value.GetPayload<unsigned long long>();
    std::string digits;
    for (unsigned int i = width; i-- > 0;) {
        const bool bit = ((bits >> i) & 1) != 0;
        if (bit || !digits.empty() || i == 0) digits += bit ? '1' : '0';
    }
    return digits;
}

template <typename Number>
std::string ShortestText(Number number) {
    std::array<char, 32> buffer{};  // longest: a double with sign, 17 digits, point and exponent
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    return {buffer.data(), end};
}

std::string RealText(const CValue& value) {
    switch (value.GetType()) {
        case ElementaryType::Real: return ShortestText(value.GetPayload<float>());
        case ElementaryType::LReal: return ShortestText(value.GetPayload<double>());
        default: return ShortestText(value.GetPayload<long long>());
    }
}

std::string StringOf(const CValue& value) {
    const ElementaryType type = value.GetType();
    std::string text;
    if (type == ElementaryType::String || type == ElementaryType::WString) {
        value.GetStringValue(text);
    } else if (value.IsDefined()) {
        CTextOutputString output;
        value.GetAsText(nullptr, output);
        text = output.TakeText();
    }
    return text;
}

/// The change without identifier: value and, but for single bits, the blank behind it.
std::string ChangeText(const CValue& value, ElementaryType type) {
    const bool known = value.GetType() == type;
    switch (ShapeOf(type)) {
        case Shape::Real: return "r" + (known ? RealText(value) : "nan") + " ";
        case Shape::String: return "s" + EscapeString(StringOf(value)) + " ";
        default: break;
    }
    const unsigned int width = WidthOf(type);
    const std::string digits = known ? VectorText(value, width) : "x";
    return width == 1 ? digits : "b" + digits + " ";
}

std::vector<std::string> SplitAtDots(const std::string& name) {
    std::vector<std::string> parts(1);
    for (const char character : name) {
        if (character == '.') {
            parts.emplace_back();
        } else {
            parts.back() += character;
        }
    }
    return parts;
}

}  // namespace

void VcdWriter::AddVariable(const std::string& name, ElementaryType type) {
    variables_.push_back({name, type, IdentifierCode(variables_.size()), {}});
}

void VcdWriter::WriteHeader() {
    output_ << "$version tn61131 $end\n$timescale 1 ms $end\n";
    WriteDeclarations();
    output_ << "$enddefinitions $end\n";
}

void VcdWriter::WriteDeclarations() {
    std::vector<std::string> open;  // the scopes around the variable before
    for (const Variable& variable : variables_) {
        std::vector<std::string> scopes = SplitAtDots(variable.name);
        const std::string last = scopes.back();
        scopes.pop_back();
        const auto common = std::mismatch(open.begin(), open.end(), scopes.begin(), scopes.end()).second;
        const auto shared = static_cast<std::size_t>(common - scopes.begin());
        for (; open.size() > shared; open.pop_back())
            output_ << "$upscope $end\n";
        for (; open.size() < scopes.size(); open.push_back(scopes[open.size()]))
            output_ << "$scope module " << ReferenceName(scopes[open.size()]) << " $end\n";
        const Shape shape = ShapeOf(variable.type);
        const char* kind = shape == Shape::Wire ? "wire " : shape == Shape::Real ? "real " : "string ";
        const unsigned int width = shape == Shape::Wire ? WidthOf(variable.type) : shape == Shape::Real ? 64 : 1;
        output_ << "$var " << kind << width << ' ' << variable.code << ' ' << ReferenceName(last) << " $end\n";
    }
    for (; !open.empty(); open.pop_back())
        output_ << "$upscope $end\n";
}

void VcdWriter::WriteTime(long long timestampMS) {
    if (!sampled_) firstMS_ = timestampMS;
    // Differences of 64-bit numbers fit 64 bits without a sign.
    const unsigned long long elapsed = timestampMS < firstMS_ ? 0
                                                              : static_cast<unsigned long long>(timestampMS) -
                                                                    static_cast<unsigned long long>(firstMS_);
    time_ = std::max(time_, elapsed);
    sampled_ = true;
    output_ << '#' << time_ << '\n';
}

void VcdWriter::Sample(long long timestampMS, const std::vector<CValue>& values) {
    WriteTime(timestampMS);
    for (std::size_t i = 0; i < variables_.size() && i < values.size(); ++i) {
        Variable& variable = variables_[i];
        std::string change = ChangeText(values[i], variable.type);
        if (change == variable.change) continue;
        output_ << change << variable.code << '\n';
        variable.change = std::move(change);
    }
}

}  // namespace tn61131
