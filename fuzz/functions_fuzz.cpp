// Any function of any group and any block, with any arguments. Input: group (bit 7 set for blocks), id, then a type
// byte and a payload for each argument.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

#include "functions/BuiltInFunctions.h"
#include "functions/FunctionContext.h"
#include "platform/ClientAccess.h"
#include "value/CompositeValue.h"
#include "value/Value.h"
#include "vm/MemoryBlock.h"
#include "vm/MemoryRef.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace {

using Bytes = std::span<const unsigned char>;

Bytes Take(Bytes& input, std::size_t count) {
    const Bytes taken = input.first(std::min(count, input.size()));
    input = input.subspan(taken.size());
    return taken;
}

unsigned char TakeByte(Bytes& input) {
    const Bytes byte = Take(input, 1);
    return byte.empty() ? 0 : byte[0];
}

/// Strings and composites of a stated length, which bit 7 multiplies, so that long ones need few bytes.
std::vector<unsigned char> TakeText(Bytes& input) {
    const unsigned char length = TakeByte(input);
    const Bytes part = Take(input, length & 0x7FU);
    std::vector<unsigned char> text;
    for (unsigned int copies = length >= 0x80 ? 300 : 1; copies != 0; --copies) {
        text.insert(text.end(), part.begin(), part.end());
    }
    text.resize(text.size() + 8);  // what composites of any element type may read
    return text;
}

CValue TakeValue(Bytes& input) {
    CValue value;
    const auto type = static_cast<ElementaryType>(TakeByte(input) % 28);
    if (type == ElementaryType::Composite) {
        const auto elementType = static_cast<ElementaryType>(TakeByte(input) % 28);
        const std::vector<unsigned char> data = TakeText(input);
        const unsigned int size = std::max(1U, CValueType(elementType).GetSize());
        value.SetCompositeValue(
            new CCompositeValue(elementType, static_cast<unsigned int>(data.size()) / size, data.data()));
    } else if ((TypeBit(type) & kOwningTypes) != 0) {
        const std::vector<unsigned char> text = TakeText(input);
        const auto length = static_cast<unsigned int>(text.size()) - 8;
        value = CValue(reinterpret_cast<const char*>(text.data()), length, type);
        if (type == ElementaryType::String) value.SetFromVMString(text.data(), length);
        if (type == ElementaryType::WString) {
            std::vector<unsigned short> units(text.size() / 2);
            std::memcpy(units.data(), text.data(), units.size() * 2);
            value.SetFromVMWString(units.data(), length / 2);
        }
    } else {
        const Bytes payload = Take(input, CValueType(type).GetSize());
        unsigned char data[8] = {};
        std::copy(payload.begin(), payload.end(), data);
        value.SetFromDataBytes(type, data, sizeof(data));
    }
    return value;
}

void Require(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes input(data, size);
    const unsigned char group = TakeByte(input);
    const unsigned char id = TakeByte(input);
    const bool isBlock = (group & 0x80U) != 0;
    std::vector<CValue> arguments;
    while (!input.empty() && arguments.size() < 255)
        arguments.push_back(TakeValue(input));
    const auto count = static_cast<unsigned char>(arguments.size());
    CValue* const first = arguments.empty() ? nullptr : arguments.data();

    const CClientAccessContext access;
    CVirtualMachine image;
    CMemoryBlock globals;
    globals.AllocateNewData(64);
    CVirtualMachineExec exec(access, "fuzz", &image, &globals, nullptr);
    CBuiltInFunctions& registry = exec.GetBuiltInFunctions();
    CBuiltInFunctionContext context(access.GetDataFormatSettings(), &exec, registry);
    context.SetCurrentFunction(0, isBlock, group & 0x7FU, id);
    CErrorLog log;
    CValue result;
    CallStatus status = CallStatus::Continue;
    if (isBlock) {
        CMemoryRef instance(globals, 0);
        const unsigned int dataSize = registry.GetFunctionBlockDataSize(group & 0x7FU, id);
        status = registry.ExecuteFunctionBlock(exec, context, instance, dataSize, count, first, log);
    } else {
        status = registry.Execute(log, context, count, first, result);
        Require((status == CallStatus::Continue) == (log.GetErrorCount() == 0));
    }
    Require(log.GetErrorCount() <= 1);
    return 0;
}
