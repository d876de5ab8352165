#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform/ErrorLog.h"
#include "platform/Export.h"
#include "platform/StringObject.h"
#include "value/PointerValue.h"
#include "value/ValueType.h"

class CBinaryInput;
class CBinaryOutput;
class CCompositeValue;
class CLogicToken;
class CTNTimeZone;
class CTNTimestamp;
class CTextOutput;
class JSONValue;

/// A tagged value: the type (the base) and 8 bytes of payload, with its storage, its literal text, its raw bytes and
/// its persisted form. Strings and composites are owned heap objects; every other type lives in the payload.
///
/// Payload by type: BOOL a byte 0 or 1; integers and bit strings in their width; TIME signed 64-bit milliseconds;
/// TIME_OF_DAY unsigned 32-bit milliseconds since midnight; DATE unsigned 32-bit days and DATE_AND_TIME unsigned 64-bit
/// milliseconds since 1970-01-01; CHAR and WCHAR their unit; POINTER a PointerValue; TYPE a CVMTypeValue. The bytes
/// behind a narrow payload are not defined. A null string or composite pointer counts as empty.
class TN61131_API CValueLiteral : public CValueType {
 public:
    CValueLiteral() noexcept : payload_{} {}
    /// STRING and WSTRING own an empty string, every other type has a zero payload (a COMPOSITE a null pointer).
    explicit CValueLiteral(ElementaryType type);
    CValueLiteral(const CValueLiteral&) = delete;
    CValueLiteral& operator=(const CValueLiteral&) = delete;
    ~CValueLiteral() { ClearValue(); }

    // --- storage ---

    /// Releases what the value owns and makes it undefined.
    void ClearValue() noexcept {
        if ((TypeBit(type_) & kOwningTypes) != 0) ReleaseOwned();
        type_ = ElementaryType::Undefined;
    }
    /// The payload's address.
    [[nodiscard]] void* GetValue() const noexcept { return const_cast<unsigned char*>(payload_); }
    /// Reads the payload's first bytes as a T, whatever the type.
    template <typename T>
    [[nodiscard]] T GetPayload() const noexcept {
        static_assert(sizeof(T) <= sizeof(payload_));
        T value;
        std::memcpy(&value, payload_, sizeof(T));
        return value;
    }
    [[nodiscard]] const Utf8String* GetUtf8String() const noexcept { return GetPayload<Utf8String*>(); }
    [[nodiscard]] const Utf16String* GetUtf16String() const noexcept { return GetPayload<Utf16String*>(); }
    [[nodiscard]] const CCompositeValue* GetComposite() const noexcept { return GetPayload<CCompositeValue*>(); }

    /// STRING from `count` bytes, respectively WSTRING from `count` units, copied.
    void SetUtf8StringFromVMString(const unsigned char* data, unsigned int count);
    void SetUtf16StringFromVMWString(const unsigned short* data, unsigned int count);

    /// Whether the payload is zero in its type's sense: FALSE, 0, 0.0 (NaN is not), the empty string, a pointer of
    /// location 0. Undefined, composites and TYPE count as zero.
    [[nodiscard]] bool IsZero() const noexcept;
    /// Signed integers, TIME and reals below zero.
    [[nodiscard]] bool IsNegative() const noexcept;
    /// 16 bytes, and for strings the string object's.
    [[nodiscard]] unsigned int GetMemorySize() const noexcept;
    /// Same type and same value. Pointers and composites are never equal; NaN is not equal to itself.
    [[nodiscard]] bool IsEqual(const CValueLiteral& other) const noexcept;
    /// Ordering of values of one type; undefined sorts before everything defined.
    [[nodiscard]] bool LessThan(const CValueLiteral& other) const noexcept;

    /// The text of a STRING or WSTRING; nothing changes for another type.
    void GetStringValue(std::string& out) const;
    /// The time of a DATE or DATE_AND_TIME; nothing changes for another type.
    void GetTimestampValue(CTNTimestamp& out) const noexcept;

    // --- literals to values (IEC 61131-3, 6.3); each logs one message and returns false on failure ---

    /// Parses by the wanted type, or by the text's prefix when `wanted` is Undefined. False without a message for a
    /// type that has no literal.
    bool SetFromText(CErrorLog& log, const ErrorLocation& location, const std::string& text, ElementaryType wanted);
    bool StringToBool(CErrorLog& log, const ErrorLocation& location, const char* text);
    bool StringToInteger(CErrorLog& log, const ErrorLocation& location, const char* text, ElementaryType wanted);
    bool StringToReal(CErrorLog& log, const ErrorLocation& location, const char* text, ElementaryType wanted);
    bool StringToString(CErrorLog& log, const ErrorLocation& location, const char* text);
    bool StringToWString(CErrorLog& log, const ErrorLocation& location, const char* text);
    bool StringToTime(CErrorLog& log, const ErrorLocation& location, const char* text);
    bool StringToTimeOfDay(CErrorLog& log, const ErrorLocation& location, const char* text);
    bool StringToDate(CErrorLog& log, const ErrorLocation& location, const char* text);
    bool StringToDateAndTime(CErrorLog& log, const ErrorLocation& location, const char* text);
    bool StringToPointer(CErrorLog& log, const ErrorLocation& location, const char* text);
    bool StringToType(CErrorLog& log, const ErrorLocation& location, const char* text);
    /// The value of a literal token of structured text; a number takes the wanted type. A token that is no literal
    /// gives message 252 and leaves the value as it is. Messages have the token's location.
    bool InitialiseFromToken(CErrorLog& log, const CLogicToken& token, ElementaryType wanted);
    /// LREAL from a number, BOOL from a boolean, WSTRING from a string; from anything else a WSTRING with its JSON
    /// text.
    void SetFromJSONValue(const JSONValue* json);
    /// Sign, number and radix at the start of `text`; what follows is not looked at. False when there is no digit.
    static bool ParseSignedInteger(const char* text, bool& negative, unsigned long long& magnitude, int& radix);
    /// Digits and underscores of one radix, wrapping in 64 bits; `text` moves behind them.
    static bool ParseUnsignedInteger(const char*& text, int radix, unsigned long long& value);

    // --- values to text; never fails ---

    /// Plain text. The time zone is accepted and not used: dates are written as stored.
    void GetAsText(const CTNTimeZone* timeZone, CTextOutput& output) const;
    /// With a prefix where the type's literals need one: T#1h30m, 5, 16#FF.
    void GetAsLiteral(CTextOutput& output) const;
    /// With a prefix always: DINT#5, DWORD#16#FF; "Undefined" for an undefined value.
    void GetDeclaration(CTextOutput& output) const;
    /// The payload read as TIME, DATE, DATE_AND_TIME whatever the type.
    void GetTimeAsText(CTextOutput& output) const;
    void GetDateAsText(CTextOutput& output) const;
    void GetDateAndTimeAsText(char separator, CTextOutput& output) const;

    // --- raw bytes, little-endian and packed as in the machine's memory ---

    /// Bytes that GetRawData() writes given room: counts of strings included.
    [[nodiscard]] unsigned int GetRawDataSize() const noexcept;
    /// Strings write what fits of `bufferSize` with a count that says so. Fixed-size types write their whole size
    /// whatever `bufferSize` says: the buffer must have that room. False, nothing written: types without a raw form, a
    /// POINTER into fewer than 8 bytes, a string into fewer than 2.
    bool GetRawData(unsigned char* buffer, std::size_t bufferSize) const noexcept {
        switch (GetSize()) {
            // As IsZero() has it: a payload byte other than 1 is FALSE.
            case 1: buffer[0] = type_ == ElementaryType::Bool ? payload_[0] == 1 : payload_[0]; return true;
            case 2: std::memcpy(buffer, payload_, 2); return true;
            case 4: std::memcpy(buffer, payload_, 4); return true;
            case 8:
                if (type_ == ElementaryType::Pointer && bufferSize < sizeof(PointerValue)) return false;
                std::memcpy(buffer, payload_, 8);
                return true;
            default: return GetUnevenBytes(buffer, bufferSize);
        }
    }
    /// Reads a value of a type. Fixed-size types take their size; strings take the count that stands in front, cut to
    /// what `size` bytes hold, count included. The caller owns that many bytes. False, and undefined, for types without
    /// a raw form and a string in fewer than 2 bytes. A BOOL is TRUE for every byte other than 0.
    bool SetFromDataBytes(ElementaryType type, const unsigned char* data, unsigned int size) {
        ClearValue();
        switch (GetTypeInfo(type).size) {
            case 1: payload_[0] = type == ElementaryType::Bool ? data[0] != 0 : data[0]; break;
            case 2: std::memcpy(payload_, data, 2); break;
            case 4: std::memcpy(payload_, data, 4); break;
            case 8: std::memcpy(payload_, data, 8); break;
            default: return SetFromUnevenBytes(type, data, size);
        }
        type_ = type;
        return true;
    }

    // --- persisted form; `version` is that of the enclosing stream ---

    bool SaveValue(unsigned short version, CBinaryOutput& output) const;
    bool LoadValue(unsigned short version, CBinaryInput& input);

 protected:
    /// Writes a T into the payload's first bytes. The type is the caller's business.
    template <typename T>
    void PutPayload(T value) noexcept {
        static_assert(sizeof(T) <= sizeof(payload_));
        std::memcpy(payload_, &value, sizeof(T));
    }
    /// Releases what is owned, then sets type and payload.
    template <typename T>
    void SetScalar(ElementaryType type, T value) noexcept {
        ClearValue();
        type_ = type;
        PutPayload(value);
    }
    /// Frees the owned object of a string or composite type and sets its pointer to null.
    void ReleaseOwned() noexcept;
    /// Takes over type and payload; `other` becomes undefined. The value must own nothing.
    void TakeFrom(CValueLiteral& other) noexcept {
        type_ = other.type_;
        std::memcpy(payload_, other.payload_, sizeof(payload_));
        other.type_ = ElementaryType::Undefined;
    }
    /// Copies type and payload, strings and composites deeply. The value must own nothing.
    void CopyFrom(const CValueLiteral& other) {
        if ((TypeBit(other.type_) & kOwningTypes) != 0) {
            CopyOwned(other);
            return;
        }
        type_ = other.type_;
        std::memcpy(payload_, other.payload_, sizeof(payload_));
    }

 private:
    void CopyOwned(const CValueLiteral& other);
    /// StringToString() and StringToWString(): `Text` says how the two differ.
    template <typename Text>
    bool ParseCharacters(CErrorLog& log, const ErrorLocation& location, const char* text);
    // GetRawData() and SetFromDataBytes() for the types that are not 1, 2, 4 or 8 bytes wide.
    bool GetUnevenBytes(unsigned char* buffer, std::size_t bufferSize) const noexcept;
    bool SetFromUnevenBytes(ElementaryType type, const unsigned char* data, unsigned int size);

    alignas(8) unsigned char payload_[8];
};
