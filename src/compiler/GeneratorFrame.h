#pragma once

#include <cstdint>
#include <vector>

#include "compiler/Declarations.h"
#include "compiler/Model.h"

namespace tn61131::st {

/// Where the variables of one call of a routine are: entries of the value stack and a block of temporary data.
///
/// The stack of a routine, from its frame's base: what the caller pushed (result or junk, arguments, instance pointer),
/// the slots of local variables, one working entry. Expressions are evaluated in the working entry; more entries are
/// pushed above it only while something is being computed.
struct Frame {
    /// A local variable in a slot; slots lie behind the arguments in this order.
    struct LocalSlot {
        const Variable* variable;
        bool needsInitial;
    };
    /// An argument that the routine copies into its own memory before anything else.
    struct CopiedInput {
        const Variable* variable;
        std::uint32_t slot;
    };
    /// A local variable too large for temporary data: a fixed place in GlobalData, set up by every call.
    struct StaticArea {
        const Variable* variable;
        std::uint32_t offset;
    };

    std::uint32_t argumentCount = 0;  ///< entries that mean something to the routine
    std::vector<LocalSlot> slots;
    std::vector<CopiedInput> copiedInputs;
    std::vector<StaticArea> staticAreas;
    std::vector<unsigned char> tempData;  ///< initial bytes of the variables in temporary data
    bool resultNeedsInitial = true;       ///< of a result in a slot
    /// Slot of the pointer to what the frame's local data are: the function block's instance; -1 without.
    std::int32_t instanceSlot = -1;
    /// Bytes there.
    std::uint32_t instanceSize = 0;

    /// Entries when the routine starts. There is always one, which a program may use as it likes.
    [[nodiscard]] std::uint32_t GetEntryDepth() const noexcept { return argumentCount == 0 ? 1 : argumentCount; }
    /// Entries while it runs: arguments, slots, the working entry.
    [[nodiscard]] std::uint32_t GetRunningDepth() const noexcept {
        return argumentCount + static_cast<std::uint32_t>(slots.size()) + 1;
    }
};

/// Entries that an instruction can name. Deeper ones exist but cannot be read again.
inline constexpr std::uint32_t kMaxSlotIndex = 255;
/// Local variables get slots as long as this many entries are left for computing.
inline constexpr std::uint32_t kWorkingEntries = 64;
/// Arguments of a call with its result.
inline constexpr std::uint32_t kMaxArguments = 250;
/// Temporary data of a routine, which a call has to copy and the code has to hold: variables larger than this lie in
/// GlobalData where the routine cannot be active twice.
inline constexpr std::uint32_t kMaxTempVariable = 1024;

/// Makes what the most used pointer parameter of a function leads to the frame's local data, where that makes access
/// shorter: members are then reached without adding to the pointer.
void ChooseLocalData(Pou& pou, Frame& frame);

/// Leaves slots as they are that the body assigns before it reads them.
void DropInitialValues(Pou& pou, Frame& frame);

/// Gives every variable of a routine that is laid out per call its storage. `globalSize` grows by static areas. False
/// after a message.
[[nodiscard]] bool LayOutFrame(Project& project, const Declarations& declarations, Pou& pou, bool mayRecur,
                               std::uint32_t& globalSize, Frame& frame);

/// Whether a POU is called with arguments on the stack: functions and methods, but not standalone texts.
[[nodiscard]] bool TakesArguments(const Pou& pou) noexcept;

/// Whether the routine of a POU works on an instance of a function block, whose pointer it takes as its last argument.
[[nodiscard]] bool HasInstancePointer(const Pou& pou) noexcept;

}  // namespace tn61131::st
