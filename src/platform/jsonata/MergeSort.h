#pragma once

#include <cstddef>
#include <vector>

namespace tn61131::jsonata {

/// Sorts stably; `follows(left, right)` tells whether the left one has to stand behind the right one. Unlike the
/// standard library's it may answer as it likes: expressions provide it.
template <typename Follows>
void MergeSort(std::vector<std::size_t>& items, const Follows& follows) {
    std::vector<std::size_t> merged(items.size());
    for (std::size_t width = 1; width < items.size(); width *= 2) {
        for (std::size_t begin = 0; begin < items.size(); begin += 2 * width) {
            const std::size_t middle = begin + width < items.size() ? begin + width : items.size();
            const std::size_t end = middle + width < items.size() ? middle + width : items.size();
            std::size_t left = begin;
            std::size_t right = middle;
            for (std::size_t at = begin; at < end; ++at) {
                const bool takesRight = left == middle || (right < end && follows(items[left], items[right]));
                merged[at] = takesRight ? items[right++] : items[left++];
            }
        }
        items.swap(merged);
    }
}

}  // namespace tn61131::jsonata
