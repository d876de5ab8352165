#include <compare>
#include <numeric>
#include <vector>

#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Evaluator.h"
#include "platform/jsonata/MergeSort.h"
#include "platform/jsonata/TextFunctions.h"

namespace tn61131::jsonata {

namespace {

/// The keys of the items to be sorted, each evaluated when it is first compared.
class SortKeys {
 public:
    SortKeys(std::size_t terms, std::size_t items) : items_(items), keys_(terms * items), known_(terms * items) {}

    template <typename Function>
    const Value& Get(std::size_t term, std::size_t item, const Function& compute) {
        const std::size_t at = term * items_ + item;
        if (!known_[at]) {
            keys_[at] = compute(term, item);
            known_[at] = true;
        }
        return keys_[at];
    }

 private:
    std::size_t items_;
    std::vector<Value> keys_;
    std::vector<bool> known_;
};

// Less than, equal to or greater than 0. What has no key comes last in either direction.
int CompareKeys(const Value& left, const Value& right, bool isDescending, std::size_t offset) {
    if (left.IsUndefined() || right.IsUndefined()) {
        return static_cast<int>(left.IsUndefined()) - static_cast<int>(right.IsUndefined());
    }
    const auto isSortable = [](const Value& key) { return key.IsNumber() || key.IsString(); };
    if (!isSortable(left) || !isSortable(right)) ThrowAt(offset, "T2008");
    if (left.IsNumber() != right.IsNumber()) ThrowAt(offset, "T2007");
    int order = 0;
    if (left.IsNumber()) {
        order = static_cast<int>(left.GetNumber() > right.GetNumber()) -
                static_cast<int>(left.GetNumber() < right.GetNumber());
    } else {
        const std::strong_ordering text = CompareTexts(left.GetText(), right.GetText());
        order = static_cast<int>(std::is_gt(text)) - static_cast<int>(std::is_lt(text));
    }
    return isDescending ? -order : order;
}

}  // namespace

Value Evaluator::Sort(const Expr& sort, const Value& items, FrameNode* frame) {
    const std::size_t size = items.GetSize();
    SortKeys keys(sort.children.size(), size);
    const auto compute = [&](std::size_t term, std::size_t item) {
        const Value element = items.GetElement(item);
        if (!element.IsTuple()) return Evaluate(*sort.children[term], element, frame);
        const Ref<FrameNode> inner = FrameOfTuple(element, frame);
        return Evaluate(*sort.children[term], element.GetTuple().item, inner.Get());
    };
    const auto isBefore = [&](std::size_t left, std::size_t right) {
        Tick();
        int order = 0;
        for (std::size_t term = 0; order == 0 && term < sort.children.size(); ++term) {
            const Value& a = keys.Get(term, left, compute);
            const Value& b = keys.Get(term, right, compute);
            order = CompareKeys(a, b, sort.descending[term], sort.offset);
        }
        return order < 0;
    };
    std::vector<std::size_t> positions(size);
    std::iota(positions.begin(), positions.end(), std::size_t{0});
    MergeSort(positions, [&](std::size_t left, std::size_t right) { return isBefore(right, left); });
    Ref<ArrayNode> sorted = MakeSequence();
    sorted->isTupleStream = items.AsArrayNode() != nullptr && items.AsArrayNode()->isTupleStream;
    for (const std::size_t position : positions)
        sorted->Push(items.GetElement(position));
    return Value(std::move(sorted));
}

}  // namespace tn61131::jsonata
