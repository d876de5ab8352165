#pragma once

#include "platform/Export.h"

class CTNLocale;
class CTextOutput;
class CValue;

/// Texts of values and codes outside the program: SQL literals and the reasons for which history was recorded.
class TN61131_API StringFromValue {
 public:
    /// The name of a change reason into a buffer, bounded and terminated. Returns the bytes before the zero.
    static unsigned int HistoricChangeReasonToString(const CTNLocale& locale, unsigned char reason, char* buffer,
                                                     unsigned int size);
    /// Writes a value as an SQL literal. False, and nothing written, for a type that has none.
    [[nodiscard]] static bool SqlLiteralFromValue(const CValue* value, CTextOutput& output);
    /// Milliseconds as an interval from the largest to the smallest unit in it that is not zero.
    static void SqlLiteralFromTIME(long long milliseconds, CTextOutput& output);
    /// Milliseconds since midnight; more than a day counts further hours.
    static void SqlLiteralFromTOD(unsigned int milliseconds, CTextOutput& output);
};
