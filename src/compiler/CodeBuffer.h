#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "compiler/Source.h"
#include "value/Operators.h"
#include "value/PointerValue.h"
#include "value/Value.h"
#include "vm/Opcodes.h"

namespace tn61131::st {

/// A place in the code of a routine that jumps lead to.
enum class Label : std::uint32_t {};

/// Another routine of the image, by the order in which routines were first needed.
enum class RoutineId : std::uint32_t {};

/// The instructions of one routine while it is made. It knows how many entries the routine's frame has on the value
/// stack, and leaves out what no path reaches. Jumps are relative, so the finished bytes may be moved; the operands of
/// CALL are left to whoever places the routines.
class CodeBuffer {
 public:
    struct CallSite {
        std::uint32_t at;  ///< of the four-byte operand
        RoutineId routine;
    };
    struct Position {
        std::uint32_t codeOffset;
        SourceOffset source;
    };

    // --- stack ---

    /// Entries of the frame. The last one is the top.
    [[nodiscard]] std::uint32_t GetDepth() const noexcept { return depth_; }
    void SetDepth(std::uint32_t depth) noexcept { NoteDepth(depth); }
    [[nodiscard]] std::uint32_t GetTopIndex() const noexcept { return depth_ - 1; }
    /// The most entries that the frame had.
    [[nodiscard]] std::uint32_t GetMaxDepth() const noexcept { return maxDepth_; }
    /// False after an unconditional jump or return, until a label is bound that something leads to.
    [[nodiscard]] bool IsReachable() const noexcept { return reachable_; }

    // --- instructions ---

    void Push() {
        Op(Opcode::Push);
        NoteDepth(depth_ + 1);
    }
    void Pop() {
        Op(Opcode::Pop);
        --depth_;
    }
    void Return() {
        Op(Opcode::Return);
        reachable_ = false;
    }
    void LoadStack(std::uint32_t index);
    void StoreStack(std::uint32_t index);
    void LoadStatus(std::uint8_t code) { Op(Opcode::LoadStatus, code); }
    void LoadAddr(LocationKind kind, std::uint32_t offset) {
        Op(Opcode::LoadAddr, static_cast<std::uint8_t>(kind), offset);
    }
    void LoadTagAddr(std::uint16_t offset, std::uint32_t tagId) { Op(Opcode::LoadTagAddr, offset, tagId); }
    void LoadImmediate(const CValue& value);
    /// The low bits of a number as a value of a type of fixed size.
    void LoadInteger(ElementaryType type, std::int64_t bits);
    void PointerLoad(ElementaryType type, std::uint32_t size) {
        Op(Opcode::PointerLoad, static_cast<std::uint8_t>(type), static_cast<std::uint16_t>(size));
    }
    void PointerStore(ElementaryType type, std::uint32_t size) {
        Op(Opcode::PointerStore, static_cast<std::uint8_t>(type), static_cast<std::uint16_t>(size));
        --depth_;
    }
    void PointerStoreEdge(bool rising) {
        Op(Opcode::PointerStoreEdge, static_cast<std::uint8_t>(rising));
        --depth_;
    }
    void PointerLoadArray(ElementaryType type, std::uint32_t count) {
        Op(Opcode::PointerLoadArray, static_cast<std::uint8_t>(type), count);
    }
    void Convert(ElementaryType type) { Op(Opcode::Convert, static_cast<std::uint8_t>(type)); }
    void Truncate(ElementaryType type) { Op(Opcode::Truncate, static_cast<std::uint8_t>(type)); }
    void Unary(UnaryOperator op) { Op(Opcode::Unary, static_cast<std::uint8_t>(op)); }
    void Binary(BinaryOperator op) {
        Op(Opcode::Binary, static_cast<std::uint8_t>(op));
        --depth_;
    }
    /// `count` includes the entry of the result.
    void CallBuiltIn(bool withEno, std::uint8_t group, std::uint8_t id, std::uint32_t count) {
        Op(withEno ? Opcode::CallFunctionEno : Opcode::CallFunction, group, id, static_cast<std::uint8_t>(count));
        depth_ -= count - 1;
    }
    void CallLibraryBlock(std::uint8_t group, std::uint8_t id, std::uint32_t count, std::uint32_t instanceSize) {
        Op(Opcode::CallFunctionBlock, group, id, static_cast<std::uint8_t>(count), instanceSize);
        depth_ -= count - 1;
    }
    void Call(std::uint32_t count, RoutineId routine);
    void InitTempData(const std::vector<unsigned char>& data);
    void InitLocalData(std::uint32_t size) { Op(Opcode::InitLocalData, size); }

    // --- what the top is known to hold ---

    /// A value in memory at a fixed place.
    struct StoredValue {
        LocationKind location;
        std::uint32_t offset;
        ElementaryType type;
        friend bool operator==(const StoredValue&, const StoredValue&) = default;
    };
    /// Leaves out LD STACK of what was stored or loaded just before. Off at first.
    void SetForwarding(bool isOn) noexcept { forwards_ = isOn; }
    /// The top holds the value in memory. Known until the next instruction or label.
    void NoteTop(const StoredValue& value) noexcept;
    [[nodiscard]] bool TopHolds(const StoredValue& value) const noexcept;

    // --- labels ---

    [[nodiscard]] Label NewLabel() {
        labels_.push_back({});
        return static_cast<Label>(labels_.size() - 1);
    }
    /// From here on the code is what the label stands for. The stack is as deep as where the jumps to it were.
    void Bind(Label label);
    /// The same for a label that jumps further down lead to.
    void BindLoop(Label label);
    void Jump(Label label) {
        JumpOp(Opcode::Jump, label);
        reachable_ = false;
    }
    void JumpZero(Label label) { JumpOp(Opcode::JumpZero, label); }
    void JumpNotZero(Label label) { JumpOp(Opcode::JumpNotZero, label); }
    [[nodiscard]] bool IsUsed(Label label) const { return labels_[static_cast<std::uint32_t>(label)].isUsed; }

    // --- positions ---

    /// What follows comes from this place in the sources. Nothing changes for 0.
    void SetPosition(SourceOffset source);
    [[nodiscard]] SourceOffset GetPosition() const noexcept { return source_; }

    // --- the finished routine ---

    /// Stores the distances of all jumps. With `thread`, jumps that lead to jumps lead to where those lead, those to a
    /// return return, and those to what follows are left out.
    void ResolveJumps(bool thread);
    [[nodiscard]] const std::vector<unsigned char>& GetBytes() const noexcept { return bytes_; }
    [[nodiscard]] const std::vector<CallSite>& GetCallSites() const noexcept { return callSites_; }
    [[nodiscard]] const std::vector<Position>& GetPositions() const noexcept { return positions_; }
    /// Empty again, memory kept.
    void Clear();

 private:
    static constexpr std::uint32_t kUnbound = UINT32_MAX;

    struct LabelState {
        std::uint32_t at = kUnbound;
        std::uint32_t depth = 0;
        bool isUsed = false;
    };
    struct Fixup {
        std::uint32_t at;  ///< of the four-byte operand; ascending
        Label label;
        std::uint32_t target = 0;
    };

    template <typename... Operands>
    void Op(Opcode opcode, Operands... operands) {
        if (!reachable_) return;
        std::array<unsigned char, 1 + (sizeof(Operands) + ... + 0)> instruction;
        unsigned char* place = instruction.data();
        *place++ = static_cast<unsigned char>(opcode);
        ((std::memcpy(place, &operands, sizeof(operands)), place += sizeof(operands)), ...);
        Append(instruction.data(), instruction.size());
    }
    void Append(const void* data, std::size_t size);
    void JumpOp(Opcode opcode, Label label);
    void Resume();
    void NoteDepth(std::uint32_t depth) noexcept {
        depth_ = depth;
        if (depth > maxDepth_) maxDepth_ = depth;
    }
    [[nodiscard]] std::uint32_t FollowJumps(Opcode opcode, std::uint32_t target) const;
    [[nodiscard]] std::uint32_t GetTarget(const Fixup& fixup) const {
        return labels_[static_cast<std::uint32_t>(fixup.label)].at;
    }
    void ThreadJumps();
    void DropJumps();

    std::vector<unsigned char> bytes_;
    std::vector<LabelState> labels_;
    std::vector<Fixup> fixups_;
    std::vector<CallSite> callSites_;
    std::vector<Position> positions_;
    SourceOffset source_ = 0;
    std::uint32_t depth_ = 1;
    std::uint32_t maxDepth_ = 1;
    bool reachable_ = true;
    bool forwards_ = false;
    std::size_t knownAt_ = SIZE_MAX;  ///< size of the code while the top is known
    StoredValue known_{};
    std::uint32_t knownSlot_ = kUnbound;  ///< the slot that it equals; kUnbound for memory
};

}  // namespace tn61131::st
