#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "assembler/SourceCursor.h"
#include "assembler/SymbolMap.h"
#include "value/ElementaryType.h"
#include "value/PointerValue.h"

/// An address in a source: a pointer as listings print it ("Global: 4", "Temp: Frame 0 Offset 2"), or a location and
/// the path of a variable there ("Global: tank.level").
struct AsmPointer {
    PointerValue value;
    std::string path;  ///< empty for an address in numbers
    SourcePlace place;
};

/// Where paths in addresses are looked up.
struct AsmNames {
    const CSymbolMap* globals = nullptr;  ///< global data, constants and tags
    const CSymbolMap* locals = nullptr;   ///< local data; null where there is none
    const CSymbolMap* temps = nullptr;    ///< temporary data; null where there is none
};

/// Reads an address. A kind without a name can be given as `kind: offset` in numbers. False after reporting what is
/// wrong.
bool ReadPointer(CSourceCursor& cursor, bool inList, AsmPointer& out);
/// Fills in the value of an address that has a path. False after reporting that there is no such variable there.
bool ResolvePointer(CSourceCursor& cursor, const AsmNames& names, AsmPointer& pointer);

/// A literal and the bytes that its value takes in memory.
struct AsmLiteral {
    ElementaryType type = ElementaryType::Undefined;
    std::vector<unsigned char> bytes;
    AsmPointer pointer;  ///< of a POINTER that names a variable: the bytes are not known yet
};

/// Reads a literal of a type; with Undefined its prefix or its form gives the type ('' STRING, "" WSTRING, TRUE, FALSE,
/// NULL, a number with a point or an exponent LREAL, another number DINT, LINT, DWORD or LWORD). Stricter than literals
/// at run time: nothing may follow the number. False after reporting what is wrong.
bool ReadLiteral(CSourceCursor& cursor, bool inList, ElementaryType wanted, AsmLiteral& out);

/// Reads a text in single quotes with the escapes of STRING literals. False after reporting what is wrong.
bool ReadQuoted(CSourceCursor& cursor, std::string_view what, std::string& out);
