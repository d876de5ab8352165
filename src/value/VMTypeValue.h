#pragma once

#include <cstdint>

#include "platform/Export.h"
#include "value/ElementaryType.h"

class CTextOutput;

/// The description of a variable's type, three packed bytes in memory and in TYPE values.
struct TN61131_API __attribute__((packed)) CVMTypeValue {
    std::uint8_t elementType = 0;  ///< an ElementaryType code
    std::uint16_t length = 0;      ///< declared maximum length of a string; 0 for none

    [[nodiscard]] ElementaryType GetElementType() const noexcept { return static_cast<ElementaryType>(elementType); }
    /// "STRING[80]", "DINT".
    void PrintTypeValue(CTextOutput& output) const;
    /// Bytes that a variable of this type occupies in the machine's memory.
    [[nodiscard]] unsigned int GetBufferSize() const noexcept;
};
static_assert(sizeof(CVMTypeValue) == 3);
