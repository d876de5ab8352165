// Any bytes as a persisted value: loading neither reads beyond them nor allocates more than they hold, and what was
// loaded whole saves to bytes that load to a value which saves to the same bytes. First byte: the format version.
#include <cstdlib>
#include <vector>

#include "platform/BinaryStream.h"
#include "value/Value.h"

namespace {

std::vector<unsigned char> Save(const CValue& value, unsigned short version) {
    CBinaryOutputBuffer output;
    if (!value.SaveValue(version, output)) abort();
    return output.GetData();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size == 0) return 0;
    const unsigned short version = data[0] % 2 == 0 ? 13 : 14;
    CBinaryInputMemory input({data + 1, size - 1});
    CValue value;
    if (!value.LoadValue(version, input)) abort();
    if (input.HasFailed()) return 0;
    const std::vector<unsigned char> saved = Save(value, version);
    CBinaryInputMemory again(saved);
    CValue reloaded;
    if (!reloaded.LoadValue(version, again) || again.HasFailed() || again.GetBytesLeft() != 0) abort();
    if (reloaded.GetType() != value.GetType() || Save(reloaded, version) != saved) abort();
    return 0;
}
