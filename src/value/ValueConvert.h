#pragma once

#include "platform/ErrorLog.h"
#include "platform/Export.h"
#include "value/ValueLiteral.h"

class CDataFormatSettings;

/// Conversion of a value in place. Numbers extend, truncate or saturate without an error; only the parsing of text
/// checks ranges. Each operation returns false after logging one message and leaves the value as it was.
class TN61131_API CValueConvert : public CValueLiteral {
 public:
    using CValueLiteral::CValueLiteral;

    /// To any type that has a conversion; succeeds at once for the type it already has.
    bool ChangeType(CErrorLog& log, const ErrorLocation& location, ElementaryType target);
    bool ChangeTypeToBOOL(CErrorLog& log, const ErrorLocation& location);
    bool ChangeTypeToSINT(CErrorLog& log, const ErrorLocation& location);
    /// The unsigned integer or the bit string of the width, as `target` says.
    bool ChangeTypeToUSINT(CErrorLog& log, const ErrorLocation& location, ElementaryType target);
    bool ChangeTypeToINT(CErrorLog& log, const ErrorLocation& location);
    bool ChangeTypeToUINT(CErrorLog& log, const ErrorLocation& location, ElementaryType target);
    bool ChangeTypeToDINT(CErrorLog& log, const ErrorLocation& location);
    bool ChangeTypeToUDINT(CErrorLog& log, const ErrorLocation& location,
                           ElementaryType target = ElementaryType::UDInt);
    bool ChangeTypeToLINT(CErrorLog& log, const ErrorLocation& location);
    bool ChangeTypeToULINT(CErrorLog& log, const ErrorLocation& location, ElementaryType target);
    bool ChangeTypeToREAL(CErrorLog& log, const ErrorLocation& location);
    bool ChangeTypeToLREAL(CErrorLog& log, const ErrorLocation& location);
    bool ChangeTypeToTIME(CErrorLog& log, const ErrorLocation& location);
    bool ChangeTypeToTOD(CErrorLog& log, const ErrorLocation& location);
    bool ChangeTypeToDATE(CErrorLog& log, const ErrorLocation& location);
    bool ChangeTypeToDT(CErrorLog& log, const ErrorLocation& location);
    bool ChangeTypeToSTRING(CErrorLog& log, const ErrorLocation& location);
    bool ChangeTypeToWSTRING(CErrorLog& log, const ErrorLocation& location);
    bool ChangeTypeToChar(CErrorLog& log, const ErrorLocation& location);
    bool ChangeTypeToWChar(CErrorLog& log, const ErrorLocation& location);

    /// Reals toward zero first, then ChangeType().
    bool Truncate(CErrorLog& log, const ErrorLocation& location, ElementaryType target);
    /// Binary-coded decimal of `digits` nibbles in a value of `bcdType` to a number. Nibbles above 9 count with their
    /// value.
    bool BCDToInt(CErrorLog& log, const ErrorLocation& location, ElementaryType bcdType, int digits,
                  ElementaryType resultType);
    /// A number, read as `sourceType`, to `digits` (at most 16) nibbles. More digits than that are not reported.
    bool IntToBCD(CErrorLog& log, const ErrorLocation& location, ElementaryType sourceType, int digits,
                  ElementaryType resultType);

    // Converts the value and stores its number; on failure the output is untouched.
    bool GetBoolValue(CErrorLog& log, const ErrorLocation& location, bool& out);
    /// Milliseconds.
    bool GetTimeValue(CErrorLog& log, const ErrorLocation& location, long long& out);
    bool GetIntegerValue(CErrorLog& log, const ErrorLocation& location, long long& out);
    bool GetIntegerValue(CErrorLog& log, const ErrorLocation& location, int& out);
    bool GetIntegerValue(CErrorLog& log, const ErrorLocation& location, short& out);
    bool GetLengthValue(CErrorLog& log, const ErrorLocation& location, int& out);

    /// To the text that a user interface shows: dates and times by the settings, a STRING stays a STRING, everything
    /// else becomes a WSTRING. Null settings stand for the defaults.
    bool ChangeTypeToDisplayWString(const CDataFormatSettings* settings, CErrorLog& log, const ErrorLocation& location);

 private:
    /// Message 214 for this value's type and the target.
    bool RefuseConversion(CErrorLog& log, const ErrorLocation& location, ElementaryType target) const;
    /// The text of a STRING or WSTRING read as a literal of the target; anything else is refused.
    bool ConvertFromText(CErrorLog& log, const ErrorLocation& location, ElementaryType target);
    /// To an integer, a bit string or a character.
    bool ConvertToInteger(CErrorLog& log, const ErrorLocation& location, ElementaryType target);
    /// To REAL or LREAL.
    template <typename T>
    bool ConvertToFloat(CErrorLog& log, const ErrorLocation& location, ElementaryType target);
    /// The parser of a target whose text is a literal.
    bool ParseLiteral(CErrorLog& log, const ErrorLocation& location, const char* text, ElementaryType target);
};
