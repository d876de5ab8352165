#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "assembler/SymbolType.h"

class CSourceCursor;

/// The structures and enumerations that type texts may name: those added, then the library's own function blocks.
class CStructTable {
 public:
    /// False when a structure or an enumeration of that name was added before.
    bool Add(std::shared_ptr<const SymbolStruct> structure);
    bool Add(std::shared_ptr<const SymbolEnum> enumeration);
    /// Null when there is none. Case does not matter.
    [[nodiscard]] std::shared_ptr<const SymbolStruct> Find(std::string_view name) const;
    [[nodiscard]] std::shared_ptr<const SymbolEnum> FindEnum(std::string_view name) const;

 private:
    std::map<std::string, std::shared_ptr<const SymbolStruct>, std::less<>> structs_;
    std::map<std::string, std::shared_ptr<const SymbolEnum>, std::less<>> enums_;
};

/// The number of units of a STRING without a declared length.
inline constexpr std::uint16_t kDefaultStringLength = 254;

/// The type code of a name as listings print it (generic families included); -1 for none.
[[nodiscard]] int FindTypeCode(std::string_view name);

/// Reads a type: an elementary type, STRING[n] or STRING(n), ARRAY[a..b, c..d] OF type, BYTES[n], or the name of a
/// structure or an enumeration. False after reporting what is wrong.
bool ReadType(CSourceCursor& cursor, const CStructTable& structs, SymbolType& out);
