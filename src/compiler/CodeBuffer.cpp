#include "compiler/CodeBuffer.h"

#include <algorithm>
#include <array>
#include <cassert>

#include "value/TypeTable.h"

namespace tn61131::st {

namespace {

constexpr std::uint32_t kOperandSize = 4;
constexpr unsigned int kMostJumpsFollowed = 16;

}  // namespace

void CodeBuffer::Append(const void* data, std::size_t size) {
    if (!reachable_ || size == 0) return;
    const std::size_t at = bytes_.size();
    bytes_.resize(at + size);
    std::memcpy(bytes_.data() + at, data, size);
}

void CodeBuffer::LoadImmediate(const CValue& value) {
    Op(Opcode::LoadImmediate, static_cast<std::uint8_t>(value.GetType()));
    if (!reachable_) return;
    const std::size_t at = bytes_.size();
    const unsigned int size = value.GetRawDataSize();
    bytes_.resize(at + size);
    [[maybe_unused]] const bool written = value.GetRawData(bytes_.data() + at, size);
    assert(written);
}

void CodeBuffer::LoadInteger(ElementaryType type, std::int64_t bits) {
    Op(Opcode::LoadImmediate, static_cast<std::uint8_t>(type));
    Append(&bits, GetTypeInfo(type).size);
}

void CodeBuffer::Call(std::uint32_t count, RoutineId routine) {
    Op(Opcode::Call, static_cast<std::uint8_t>(count), std::uint32_t{0});
    if (reachable_) callSites_.push_back({static_cast<std::uint32_t>(bytes_.size()) - kOperandSize, routine});
    depth_ -= count - 1;
}

void CodeBuffer::InitTempData(const std::vector<unsigned char>& data) {
    Op(Opcode::InitTempData, static_cast<std::uint32_t>(data.size()));
    Append(data.data(), data.size());
}

void CodeBuffer::JumpOp(Opcode opcode, Label label) {
    Op(opcode, std::int32_t{0});
    if (!reachable_) return;
    LabelState& state = labels_[static_cast<std::uint32_t>(label)];
    assert(!state.isUsed || state.depth == depth_);
    assert(state.at == kUnbound || state.depth == depth_);
    state.isUsed = true;
    state.depth = depth_;
    fixups_.push_back({static_cast<std::uint32_t>(bytes_.size()) - kOperandSize, label});
}

void CodeBuffer::Bind(Label label) {
    LabelState& state = labels_[static_cast<std::uint32_t>(label)];
    assert(state.at == kUnbound);
    assert(!state.isUsed || !reachable_ || state.depth == depth_);
    if (!reachable_ && state.isUsed) {
        depth_ = state.depth;
        Resume();
    }
    state.at = static_cast<std::uint32_t>(bytes_.size());
    state.depth = depth_;
}

void CodeBuffer::BindLoop(Label label) {
    if (!reachable_) Resume();
    Bind(label);
}

/// What stands in front may come from another place.
void CodeBuffer::Resume() {
    reachable_ = true;
    const SourceOffset source = source_;
    source_ = 0;
    SetPosition(source);
}

void CodeBuffer::SetPosition(SourceOffset source) {
    if (source == 0 || source == source_) return;
    source_ = source;
    if (!reachable_) return;
    const auto at = static_cast<std::uint32_t>(bytes_.size());
    if (!positions_.empty() && positions_.back().codeOffset == at) {
        positions_.back().source = source;
    } else {
        positions_.push_back({at, source});
    }
}

// The value that a conditional jump tested is still on the top at its target.
std::uint32_t CodeBuffer::FollowJumps(Opcode opcode, std::uint32_t target) const {
    for (unsigned int count = 0; count < kMostJumpsFollowed && target < bytes_.size(); ++count) {
        const auto next = static_cast<Opcode>(bytes_[target]);
        if (next == Opcode::Jump || (opcode != Opcode::Jump && next == opcode)) {
            const auto found = std::lower_bound(fixups_.begin(), fixups_.end(), target + 1,
                                                [](const Fixup& fixup, std::uint32_t at) { return fixup.at < at; });
            if (found == fixups_.end() || found->at != target + 1) return target;
            target = labels_[static_cast<std::uint32_t>(found->label)].at;
        } else if ((opcode == Opcode::JumpZero && next == Opcode::JumpNotZero) ||
                   (opcode == Opcode::JumpNotZero && next == Opcode::JumpZero)) {
            target += 1 + kOperandSize;
        } else {
            return target;
        }
    }
    return target;
}

void CodeBuffer::ResolveJumps(bool thread) {
    for (const Fixup& fixup : fixups_) {
        std::uint32_t target = labels_[static_cast<std::uint32_t>(fixup.label)].at;
        assert(target != kUnbound);
        if (thread) target = FollowJumps(static_cast<Opcode>(bytes_[fixup.at - 1]), target);
        const auto distance = static_cast<std::int32_t>(std::int64_t{target} - (std::int64_t{fixup.at} + kOperandSize));
        std::memcpy(bytes_.data() + fixup.at, &distance, kOperandSize);
    }
}

void CodeBuffer::Clear() {
    bytes_.clear();
    labels_.clear();
    fixups_.clear();
    callSites_.clear();
    positions_.clear();
    source_ = 0;
    depth_ = 1;
    maxDepth_ = 1;
    reachable_ = true;
}

}  // namespace tn61131::st
