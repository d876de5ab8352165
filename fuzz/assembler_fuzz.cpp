// Sources, images and symbol maps, told apart by how they begin. What is taken must come back the same.

#include <cstdint>
#include <cstdlib>
#include <span>

#include "assembler/Assembler.h"
#include "assembler/ImageListing.h"
#include "platform/TextOutput.h"
#include "value/Value.h"

namespace {

void Require(bool condition) {
    if (!condition) std::abort();
}

void CheckMap(const CSymbolMap& map) {
    CSymbolMap loaded;
    std::string error;
    Require(loaded.Load(map.Save(), error));
    Require(loaded.Save() == map.Save());
    const unsigned char data[64] = {};
    for (const SymbolVariable& variable : map.GetVariables()) {
        SymbolReference reference;
        CValue value;
        if (map.Find(variable.scope + '.' + variable.name + "[1].a", reference, error) ||
            map.Find(variable.name, reference, error))
            (void)CSymbolMap::ReadValue(reference, data, value, error);
    }
}

void CheckListing(const ImageContent& image, const CSymbolMap* map) {
    CTextOutputString listing;
    CImageListing(image, map).Write(listing);
    CAssembler assembler;
    AssembledImage again;
    Require(assembler.Assemble("listing", listing.GetText(), again));
    Require(again.content == image);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::string error;
    if (text.starts_with("VI") || text.starts_with("BI")) {
        ImageContent image;
        if (ReadImage({data, size}, image, error)) CheckListing(image, nullptr);
    } else if (text.starts_with('{')) {
        CSymbolMap map;
        if (map.Load(text, error)) CheckMap(map);
    } else {
        CAssembler assembler({.maxDataSize = 65536, .maxCodeSize = 65536});
        AssembledImage result;
        if (!assembler.Assemble("a", text, result)) return 0;
        CheckMap(result.symbols);
        CheckListing(result.content, &result.symbols);
    }
    return 0;
}
