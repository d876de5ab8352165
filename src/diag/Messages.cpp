#include "diag/Messages.h"

namespace {

constexpr bool IsAscending() {
    for (std::size_t i = 1; i < kMessages.size(); ++i) {
        if (kMessages[i - 1].id >= kMessages[i].id) return false;
    }
    return true;
}
static_assert(kMessages.size() == 69);
static_assert(IsAscending(), "texts are found by binary search");

constexpr std::uint32_t kEnglishUnitedStates = 1033;
constexpr ResourceLanguage kLanguages[] = {{kEnglishUnitedStates, kMessages}};
constinit const CTNModule kModule("TN61131VM", kLanguages);

}  // namespace

const CTNModule& GetVMModule() noexcept {
    return kModule;
}
