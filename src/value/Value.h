#pragma once

#include <string>

#include "platform/Export.h"
#include "value/ValueConvert.h"

class CTNTimeInterval;
class CTNTimestamp;

/// The run-time value of the machine: stack entries, constants, arguments, results. Two fields wide; scalars never
/// allocate, moving never allocates or throws. Operators (IEC 61131-3, 7.3.2) work in place: the left operand takes the
/// result, the right one may be converted by promotion.
class TN61131_API CValue : public CValueConvert {
 public:
    CValue() noexcept = default;
    explicit CValue(ElementaryType type) : CValueConvert(type) {}
    explicit CValue(bool value) noexcept { SetScalar(ElementaryType::Bool, static_cast<unsigned char>(value)); }
    explicit CValue(unsigned char value) noexcept { SetScalar(ElementaryType::USInt, value); }
    explicit CValue(short value) noexcept { SetScalar(ElementaryType::Int, value); }
    explicit CValue(unsigned short value) noexcept { SetScalar(ElementaryType::UInt, value); }
    explicit CValue(int value) noexcept { SetScalar(ElementaryType::DInt, value); }
    explicit CValue(unsigned int value) noexcept { SetScalar(ElementaryType::UDInt, value); }
    /// The bits as they are under any type that owns nothing; a type that owns an object is left empty.
    CValue(unsigned int bits, ElementaryType type) noexcept;
    CValue(long long bits, ElementaryType type) noexcept;
    CValue(unsigned long long bits, ElementaryType type) noexcept;
    explicit CValue(float value) noexcept { SetScalar(ElementaryType::Real, value); }
    explicit CValue(double value) noexcept { SetScalar(ElementaryType::LReal, value); }
    /// TIME.
    explicit CValue(const CTNTimeInterval& interval) noexcept;
    /// STRING from text when `type` is STRING, else a UTF-16 string under `type`, which must be WSTRING or
    /// COMPOSITE_STRING; any other type is taken as WSTRING.
    CValue(const char* text, ElementaryType type);
    CValue(const char* text, unsigned int length, ElementaryType type);
    /// WSTRING.
    explicit CValue(const std::string& text);
    CValue(const CValue& other) { CopyFrom(other); }
    CValue(CValue&& other) noexcept { TakeFrom(other); }
    CValue& operator=(const CValue& other) {
        if (this != &other) {
            ClearValue();
            CopyFrom(other);
        }
        return *this;
    }
    CValue& operator=(CValue&& other) noexcept {
        if (this != &other) {
            ClearValue();
            TakeFrom(other);
        }
        return *this;
    }
    CValue& operator=(bool value) noexcept {
        SetBool(value);
        return *this;
    }
    ~CValue() = default;

    // --- setters: each releases what was held before ---

    void SetUndefined() noexcept { ClearValue(); }
    /// Truncated to the type's width without a range test. For types without an integer payload only the type is set
    /// (and a type that owns an object is left empty).
    void SetInteger(long long value, ElementaryType type) noexcept;
    /// The payload's bits as they are, under a type that owns nothing.
    void SetBits(ElementaryType type, unsigned long long bits) noexcept { SetScalar(type, bits); }
    void SetFloat(float value) noexcept { SetScalar(ElementaryType::Real, value); }
    void SetDouble(double value) noexcept { SetScalar(ElementaryType::LReal, value); }
    void SetBool(bool value) noexcept { SetScalar(ElementaryType::Bool, static_cast<unsigned char>(value)); }
    /// DATE_AND_TIME.
    void SetTimestamp(const CTNTimestamp& timestamp) noexcept;
    /// STRING when `type` is STRING, else WSTRING.
    void SetString(const std::string& text, ElementaryType type);
    void SetString(const char* text, unsigned int length, ElementaryType type);
    void SetString(const char* text, ElementaryType type);
    /// Takes ownership of the object.
    void SetString(Utf8String* text) noexcept { SetScalar(ElementaryType::String, text); }
    void SetWString(Utf16String* text) noexcept { SetScalar(ElementaryType::WString, text); }
    void SetFromVMString(const unsigned char* data, unsigned int count) { SetUtf8StringFromVMString(data, count); }
    void SetFromVMWString(const unsigned short* data, unsigned int count) { SetUtf16StringFromVMWString(data, count); }
    /// Takes ownership of the heap object; null is an empty composite.
    void SetCompositeValue(CCompositeValue* composite) noexcept { SetScalar(ElementaryType::Composite, composite); }
    void SetCompositeString(const std::string& text);
    void SetAddress(unsigned short area, unsigned short frame, unsigned int offset) noexcept {
        SetScalar(ElementaryType::Pointer, PointerValue{static_cast<LocationKind>(area), frame, offset});
    }

    // --- operators ---

    /// How CompareValue() found two values.
    enum class Order : unsigned char { Failed = 0, Greater = 1, Equal = 2, Less = 3, Unordered = 4 };

    bool UnaryOperation(CErrorLog& log, const ErrorLocation& location, unsigned char code);
    bool BinaryOperation(CErrorLog& log, const ErrorLocation& location, unsigned char code, CValue& right);
    /// SHL 1, SHR 2, ROR 3, ROL 4; a negative count shifts the other way.
    bool ShiftOperation(CErrorLog& log, const ErrorLocation& location, unsigned char code, int count);

    bool Negate(CErrorLog& log, const ErrorLocation& location);
    bool Not(CErrorLog& log, const ErrorLocation& location);
    bool Add(CErrorLog& log, const ErrorLocation& location, CValue& right);
    bool Sub(CErrorLog& log, const ErrorLocation& location, CValue& right);
    bool Mul(CErrorLog& log, const ErrorLocation& location, CValue& right);
    bool Div(CErrorLog& log, const ErrorLocation& location, CValue& right);
    bool Mod(CErrorLog& log, const ErrorLocation& location, CValue& right);
    bool Pow(CErrorLog& log, const ErrorLocation& location, CValue& right);
    bool EQ(CErrorLog& log, const ErrorLocation& location, CValue& right);
    bool NE(CErrorLog& log, const ErrorLocation& location, CValue& right);
    bool GT(CErrorLog& log, const ErrorLocation& location, CValue& right);
    bool GE(CErrorLog& log, const ErrorLocation& location, CValue& right);
    bool LT(CErrorLog& log, const ErrorLocation& location, CValue& right);
    bool LE(CErrorLog& log, const ErrorLocation& location, CValue& right);
    bool LogicalAnd(CErrorLog& log, const ErrorLocation& location, CValue& right);
    bool LogicalOr(CErrorLog& log, const ErrorLocation& location, CValue& right);
    bool LogicalXor(CErrorLog& log, const ErrorLocation& location, CValue& right);
    /// Counts are positive; a shift by the type's width or more gives 0, a rotation takes the count modulo the width.
    bool ShiftLeft(CErrorLog& log, const ErrorLocation& location, int count);
    bool ShiftRight(CErrorLog& log, const ErrorLocation& location, int count);
    bool RotateRight(CErrorLog& log, const ErrorLocation& location, int count);
    bool RotateLeft(CErrorLog& log, const ErrorLocation& location, int count);

    /// Promotes and compares.
    [[nodiscard]] Order CompareValue(CErrorLog& log, const ErrorLocation& location, CValue& right);
    /// Converts the operand of lower rank to the other's type.
    bool PromoteTypes(CErrorLog& log, const ErrorLocation& location, CValue& right);
};
static_assert(sizeof(CValue) == 16);
