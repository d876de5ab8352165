#pragma once

#include "platform/StringObject.h"

namespace tn61131 {

/// Negative, 0 or positive, as the objects compare; a null object counts as the empty string.
[[nodiscard]] inline int CompareStrings(const Utf8String* left, const Utf8String* right) noexcept {
    if (left != nullptr && right != nullptr) return Utf8StringCompare(left, right);
    return static_cast<int>(!GetUnits(left).empty()) - static_cast<int>(!GetUnits(right).empty());
}
[[nodiscard]] inline int CompareStrings(const Utf16String* left, const Utf16String* right) noexcept {
    if (left != nullptr && right != nullptr) return Utf16StringCompare(left, right);
    return static_cast<int>(!GetUnits(left).empty()) - static_cast<int>(!GetUnits(right).empty());
}

}  // namespace tn61131
