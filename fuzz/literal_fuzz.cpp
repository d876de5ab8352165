// Any text as a literal of any type: no parser reads beyond it, and what was parsed prints as a literal that parses
// back to the same raw bytes. First byte: the wanted type; the rest is the text.
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/ErrorLog.h"
#include "platform/TextOutput.h"
#include "value/Value.h"

namespace {

std::vector<unsigned char> RawOf(const CValue& value) {
    std::vector<unsigned char> bytes(value.GetRawDataSize());
    if (!value.GetRawData(bytes.data(), bytes.size())) abort();
    return bytes;
}

// Seconds may lose a millisecond, a NaN keeps no payload bits, a REAL is rounded twice.
bool IsExact(const CValue& value) {
    return !value.IsTypeOf(ElementaryType::AnyDate) && !value.IsTypeOf(ElementaryType::AnyReal);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size == 0) return 0;
    const auto wanted = static_cast<ElementaryType>(data[0] % 32);
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    CErrorLog log;
    CValue value;
    if (!value.SetFromText(log, ErrorLocationNull::Get(), text, wanted)) return 0;
    if (log.GetErrorCount() != 0) abort();
    CTextOutputString literal;
    value.GetAsLiteral(literal);
    CValue again;
    if (!again.SetFromText(log, ErrorLocationNull::Get(), literal.GetText(), value.GetType())) abort();
    if (again.GetType() != value.GetType() || (IsExact(value) && RawOf(again) != RawOf(value))) abort();
    return 0;
}
