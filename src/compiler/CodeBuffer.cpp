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

void CodeBuffer::LoadStack(std::uint32_t index) {
    if (forwards_ && knownAt_ == bytes_.size() && knownSlot_ == index) return;
    Op(Opcode::LoadStack, static_cast<std::uint8_t>(index));
    knownAt_ = bytes_.size();
    knownSlot_ = index;
}

void CodeBuffer::StoreStack(std::uint32_t index) {
    Op(Opcode::StoreStack, static_cast<std::uint8_t>(index));
    knownAt_ = bytes_.size();
    knownSlot_ = index;
}

void CodeBuffer::NoteTop(const StoredValue& value) noexcept {
    knownAt_ = bytes_.size();
    knownSlot_ = kUnbound;
    known_ = value;
}

bool CodeBuffer::TopHolds(const StoredValue& value) const noexcept {
    return forwards_ && knownAt_ == bytes_.size() && knownSlot_ == kUnbound && known_ == value;
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
    knownAt_ = SIZE_MAX;
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
            target = GetTarget(*found);
        } else if ((opcode == Opcode::JumpZero && next == Opcode::JumpNotZero) ||
                   (opcode == Opcode::JumpNotZero && next == Opcode::JumpZero)) {
            target += 1 + kOperandSize;
        } else {
            return target;
        }
    }
    return target;
}

void CodeBuffer::ThreadJumps() {
    for (Fixup& fixup : fixups_)
        fixup.target = FollowJumps(static_cast<Opcode>(bytes_[fixup.at - 1]), fixup.target);
}

/// Takes jumps to the next instruction out and makes a return of each jump to one, then moves what is behind forward.
void CodeBuffer::DropJumps() {
    struct Cut {
        std::uint32_t at;       ///< first byte that goes
        std::uint32_t removed;  ///< bytes that have gone up to the end of this cut
    };
    std::vector<Cut> cuts;
    std::uint32_t removed = 0;
    std::uint32_t nextFree = 0;  ///< end of the last cut
    std::vector<Fixup> left;
    std::vector<unsigned char> bytes;
    bytes.reserve(bytes_.size());
    const auto copyUpTo = [&](std::uint32_t end) {
        bytes.insert(bytes.end(), bytes_.begin() + nextFree, bytes_.begin() + end);
    };
    for (const Fixup& fixup : fixups_) {
        const std::uint32_t start = fixup.at - 1;
        const std::uint32_t end = fixup.at + kOperandSize;
        const bool returns = bytes_[start] == static_cast<unsigned char>(Opcode::Jump) &&
                             fixup.target < bytes_.size() &&
                             bytes_[fixup.target] == static_cast<unsigned char>(Opcode::Return);
        if (fixup.target != end && !returns) {
            left.push_back(fixup);
            continue;
        }
        const bool keepsReturn = fixup.target != end;
        copyUpTo(start);
        if (keepsReturn) bytes.push_back(static_cast<unsigned char>(Opcode::Return));
        removed += end - start - (keepsReturn ? 1 : 0);
        cuts.push_back({keepsReturn ? start + 1 : start, removed});
        nextFree = end;
    }
    if (cuts.empty()) return;
    copyUpTo(static_cast<std::uint32_t>(bytes_.size()));
    bytes_ = std::move(bytes);
    fixups_ = std::move(left);
    const auto move = [&cuts](std::uint32_t& at) {
        const auto next = std::upper_bound(cuts.begin(), cuts.end(), at,
                                           [](std::uint32_t offset, const Cut& cut) { return offset <= cut.at; });
        if (next != cuts.begin()) at -= (next - 1)->removed;
    };
    for (Fixup& fixup : fixups_) {
        move(fixup.at);
        move(fixup.target);
    }
    for (CallSite& site : callSites_)
        move(site.at);
    for (Position& position : positions_)
        move(position.codeOffset);
}

void CodeBuffer::ResolveJumps(bool thread) {
    for (Fixup& fixup : fixups_) {
        fixup.target = GetTarget(fixup);
        assert(fixup.target != kUnbound);
    }
    if (thread) {
        ThreadJumps();
        DropJumps();
    }
    for (const Fixup& fixup : fixups_) {
        const auto distance =
            static_cast<std::int32_t>(std::int64_t{fixup.target} - (std::int64_t{fixup.at} + kOperandSize));
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
    knownAt_ = SIZE_MAX;
}

}  // namespace tn61131::st
