#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "assembler/SymbolMap.h"

// The words of the map file, for its writer and its reader.
namespace symbolmap {

inline constexpr std::string_view kFormatName = "tn61131-map";
inline constexpr std::uint32_t kVersion = 1;

/// Index = LocationKind.
inline constexpr std::array<std::string_view, 7> kLocationNames = {"null", "global",   "local", "temp",
                                                                   "tag",  "constant", "block"};
/// Index = SymbolLabel::Kind.
inline constexpr std::array<std::string_view, 5> kLabelKindNames = {"label", "function", "program", "expression",
                                                                    "codeblock"};

/// Index = SymbolPou::Kind.
inline constexpr std::array<std::string_view, 5> kPouKindNames = {"program", "function", "functionblock", "method",
                                                                  "action"};
/// Index = SymbolLocal::Place.
inline constexpr std::array<std::string_view, 8> kPlaceNames = {"global", "constant", "instance",    "instancepointer",
                                                                "temp",   "slot",     "slotpointer", "tag"};
/// Whether a retained range is kept over a download too: index = SymbolRetained::isPersistent.
inline constexpr std::array<std::string_view, 2> kRetainedNames = {"retain", "persistent"};

[[nodiscard]] constexpr std::string_view GetLocationName(LocationKind location) noexcept {
    return kLocationNames[static_cast<std::size_t>(location) % kLocationNames.size()];
}
[[nodiscard]] constexpr std::string_view GetLabelKindName(SymbolLabel::Kind kind) noexcept {
    return kLabelKindNames[static_cast<std::size_t>(kind)];
}

}  // namespace symbolmap
