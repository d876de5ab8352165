#include "vm/DirectlyLocatedVariables.h"

CDirectlyLocatedVariables::~CDirectlyLocatedVariables() = default;

namespace {

constexpr bool IsString(ElementaryType type) noexcept {
    return type == ElementaryType::String || type == ElementaryType::WString;
}

}  // namespace

void DirectlyLocatedType::SetTypeInfo(bool newFlag, ElementaryType newType, ElementaryType newPointedToType,
                                      unsigned int size, bool newReadOnly) noexcept {
    if (newType == ElementaryType::Pointer && IsString(newPointedToType)) {
        SetGenericReadOnlyString(newPointedToType);
        flag = newFlag;
        return;
    }
    flag = newFlag;
    type = newType;
    pointedToType = newPointedToType;
    readOnly = newReadOnly;
    length = 1;
    if (newType == ElementaryType::String) length = size - 2;
    if (newType == ElementaryType::WString) length = size / 2 - 2;
}

void DirectlyLocatedType::SetGenericReadOnlyString(ElementaryType stringType) noexcept {
    flag = false;
    type = stringType;
    pointedToType = ElementaryType::Undefined;
    length = kGenericStringLength;
    readOnly = true;
}
