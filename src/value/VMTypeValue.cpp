#include "value/VMTypeValue.h"

#include "platform/TextOutput.h"
#include "value/ValueType.h"

void CVMTypeValue::PrintTypeValue(CTextOutput& output) const {
    output.Write(CValueType(GetElementType()).GetTypeName(false));
    const unsigned int declaredLength = length;
    if (declaredLength != 0) output.Print("[%u]", declaredLength);
}

unsigned int CVMTypeValue::GetBufferSize() const noexcept {
    switch (GetElementType()) {
        case ElementaryType::String: return length + 2U;
        case ElementaryType::WString: return (length + 1U) * 2U;
        default: return CValueType(GetElementType()).GetSize();
    }
}
