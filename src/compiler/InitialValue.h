#pragma once

#include <cstdint>
#include <span>

#include "compiler/Types.h"
#include "value/Value.h"

namespace tn61131::st {

/// A checked initial value. Immutable, lives as long as the Declarations that made it. What it leaves out has the
/// default of its type, which is looked up only when bytes are written: so the order of declarations does not matter.
struct InitialValue {
    enum class Kind : std::uint8_t { Scalar, Address, Array, Members };
    Kind kind;
    const Type* type;  ///< of the variable, the element or the member that it is for
};

/// Of everything that is no aggregate and no address.
struct ScalarInitial : InitialValue {
    CValue value;  ///< of the type's storage
};

/// A pointer to a variable at a fixed place.
struct AddressInitial : InitialValue {
    const Variable* variable;  ///< no alias
    std::uint32_t offset;      ///< bytes within the variable
};

/// `repeat` times the same value, each time for `elements` elements. Null is the default of the element.
struct InitialRun {
    std::uint32_t repeat = 1;
    std::uint32_t elements = 1;
    const InitialValue* value = nullptr;
};

/// The elements of an array, or of one row of it, from the first on in the order of memory.
struct ArrayInitial : InitialValue {
    const Type* element;
    std::span<const InitialRun> runs;
};

struct InitialMember {
    NameId name = NameId::None;
    std::uint32_t offset = 0;  ///< bytes from the start of the structure or instance
    const Type* type = nullptr;
    const InitialValue* value = nullptr;  ///< never null
};

/// Some members of a structure or variables of an instance.
struct MembersInitial : InitialValue {
    std::span<const InitialMember> members;
};

/// Writes the initial bytes of a variable of the type: `initial`, or the type's default when that is null. `bytes` has
/// the type's size. Variables that addresses point to must have their place.
void WriteInitialBytes(const Type* type, const InitialValue* initial, std::span<unsigned char> bytes);

/// The value that a variable of the type starts with, where that is no aggregate and no address: `initial`, or the
/// type's default when that is null. Undefined for aggregates, the null pointer for addresses.
[[nodiscard]] CValue GetInitialScalar(const Type* type, const InitialValue* initial);

/// The bits of an integer, a time or a date; those of a signed type with their sign.
[[nodiscard]] std::int64_t GetIntegerBits(const CValue& value) noexcept;

}  // namespace tn61131::st
