#pragma once

#include "platform/Export.h"
#include "value/ElementaryType.h"
#include "value/PointerValue.h"

class CMemoryRef;

/// The description of a directly located variable's type, filled by the host.
struct TN61131_API DirectlyLocatedType {
    /// What a string of unknown declaration is taken to hold, in characters.
    static constexpr unsigned int kGenericStringLength = 254;

    bool flag = false;  ///< the host's, stored unchanged
    ElementaryType type = ElementaryType::Undefined;
    ElementaryType pointedToType = ElementaryType::Undefined;
    unsigned int length = 1;  ///< element count of scalars, maximum character count of strings
    bool readOnly = true;

    /// `size` is the variable's size in bytes. A pointer to a string is described as the read-only string itself.
    void SetTypeInfo(bool newFlag, ElementaryType newType, ElementaryType newPointedToType, unsigned int size,
                     bool newReadOnly) noexcept;
    void SetGenericReadOnlyString(ElementaryType stringType) noexcept;
};

/// The host's provider of directly located variables (IEC 61131-3, 6.5.5): its tags. Used by the thread that runs the
/// context. The memory that it hands out must stay valid until the run that asked for it has ended, and until the next
/// scan where a program keeps it as its local data.
class TN61131_API CDirectlyLocatedVariables {
 public:
    virtual ~CDirectlyLocatedVariables();
    /// Describes a tag for tools; the machine never calls it. False for an unknown tag.
    virtual bool GetTagType(unsigned int tagId, DirectlyLocatedType& type) const = 0;
    /// Sets `out` to `size` bytes of the tag `pointer->offset` from its byte `pointer->frame` on. False when there is
    /// no such tag or range.
    virtual bool ResolveTagAddress(const PointerValue* pointer, unsigned int size, CMemoryRef& out) const = 0;
};
