#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "assembler/SymbolMap.h"

class CMemoryBlock;
class CValue;

namespace tn61131 {

class TagTable;

/// A variable whose value is reported after each scan.
struct WatchedVariable {
    std::string name;  ///< as it was asked for
    SymbolReference reference;
};

/// The memory that watched variables lie in. Everything is borrowed; `tags` may be null.
struct WatchMemory {
    const CMemoryBlock* globalData = nullptr;
    const CMemoryBlock* constants = nullptr;
    const TagTable* tags = nullptr;
};

/// Splits "a,b[1,2],c" at the commas outside brackets; empty parts are dropped.
[[nodiscard]] std::vector<std::string> SplitWatchNames(std::string_view list);

/// What one run may watch.
inline constexpr std::size_t kMaxWatched = 10000;

/// Finds each name in the map; a structure or an array stands for its elements. False, the reason in `error`, at the
/// first that means nothing, has no fixed place or makes the variables more than kMaxWatched.
[[nodiscard]] bool FindWatched(const CSymbolMap& map, const std::vector<std::string>& names,
                               std::vector<WatchedVariable>& watched, std::string& error);

/// All variables of the map with a fixed place, in its order; structures and arrays by their elements. Stops when there
/// would be more than `maximum`, and returns what it has by then.
[[nodiscard]] std::vector<WatchedVariable> ListVariables(const CSymbolMap& map, std::size_t maximum);

/// The present value; false when the bytes are not there (a tag that is missing or too short).
[[nodiscard]] bool ReadWatched(const WatchedVariable& variable, const WatchMemory& memory, CValue& value);

}  // namespace tn61131
