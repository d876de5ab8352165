#pragma once

#include <algorithm>
#include <cstddef>
#include <span>

/// The search of Crochemore and Perrin ("two-way"): time linear in both texts whatever they hold, no memory of its own.
/// Programs choose both texts, so that a search which is only usually fast could be made to stall the host.
template <typename Unit>
class CUnitSearch {
 public:
    static constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

    /// Borrows `wanted`, which is not empty.
    explicit CUnitSearch(std::span<const Unit> wanted) noexcept : wanted_(wanted) {
        const Suffix rising = MaximalSuffix([](Unit a, Unit b) { return a < b; });
        const Suffix falling = MaximalSuffix([](Unit a, Unit b) { return a > b; });
        critical_ = std::max(rising.begin, falling.begin);
        period_ = rising.begin > falling.begin ? rising.period : falling.period;
        const auto begin = wanted_.begin();
        repeats_ = std::equal(begin, begin + Offset(critical_), begin + Offset(period_));
        if (!repeats_) period_ = std::max(critical_, wanted_.size() - critical_) + 1;
    }

    /// The 0-based place of the first occurrence in `text`; kNotFound for none.
    [[nodiscard]] std::size_t FindIn(std::span<const Unit> text) const noexcept {
        const std::size_t size = wanted_.size();
        std::size_t known = 0;  // how many units at the front are known to match, from a shift by the period
        for (std::size_t at = 0; text.size() >= size && at <= text.size() - size;) {
            std::size_t i = std::max(critical_, known);
            while (i < size && wanted_[i] == text[at + i])
                ++i;
            if (i < size) {
                at += i - critical_ + 1;
                known = 0;
                continue;
            }
            i = critical_;
            while (i > known && wanted_[i - 1] == text[at + i - 1])
                --i;
            if (i <= known) return at;
            at += period_;
            known = repeats_ ? size - period_ : 0;
        }
        return kNotFound;
    }

 private:
    struct Suffix {
        std::size_t begin;
        std::size_t period;
    };

    static std::ptrdiff_t Offset(std::size_t place) noexcept { return static_cast<std::ptrdiff_t>(place); }

    /// The greatest of all suffixes in an order of the units, and its period.
    template <typename Less>
    [[nodiscard]] Suffix MaximalSuffix(Less less) const noexcept {
        Suffix best{0, 1};
        std::size_t challenger = 1;
        std::size_t matched = 0;
        while (challenger + matched < wanted_.size()) {
            const Unit ours = wanted_[best.begin + matched];
            const Unit theirs = wanted_[challenger + matched];
            if (less(theirs, ours)) {
                challenger += matched + 1;
                matched = 0;
                best.period = challenger - best.begin;
            } else if (theirs == ours) {
                if (++matched == best.period) {
                    challenger += matched;
                    matched = 0;
                }
            } else {
                best = {challenger, 1};
                ++challenger;
                matched = 0;
            }
        }
        return best;
    }

    std::span<const Unit> wanted_;
    std::size_t critical_ = 0;  // where the right half of the wanted text begins
    std::size_t period_ = 0;    // how far to move on when the right half matched
    bool repeats_ = false;      // the left half occurs again one period later
};
