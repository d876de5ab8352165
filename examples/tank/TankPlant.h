#pragma once

#include <array>
#include <string>

#include "vm/DirectlyLocatedVariables.h"
#include "vm/MemoryBlock.h"

/// A simulated tank and the tags of its control program. The contents change by whole millilitres per scan, so that a
/// run is the same everywhere.
class TankPlant final : public CDirectlyLocatedVariables {
 public:
    // As the program declares them.
    enum Tag : unsigned int {
        kStart = 1,
        kLowLevel = 2,
        kHighLevel = 3,
        kRawLevel = 4,
        kInlet = 5,
        kMixer = 6,
        kPump = 7,
        kMessage = 8,
    };
    static constexpr int kCapacity = 100'000;    ///< millilitres, as everything below
    static constexpr int kLowSwitchAt = 10'000;  ///< covered from here on
    static constexpr int kHighSwitchAt = 90'000;
    static constexpr int kInletPerScan = 2'500;
    static constexpr int kPumpPerScan = 4'000;
    static constexpr int kRawFullScale = 27'648;  ///< what the transmitter says of a full tank

    TankPlant();

    void PressStart(bool pressed) { SetBool(kStart, pressed); }
    /// Shows the program what the instruments see; before a scan.
    void UpdateInputs();
    /// Lets the process go on for one scan with what the program has set; after a scan.
    void Advance();

    [[nodiscard]] int GetContents() const noexcept { return contents_; }
    [[nodiscard]] bool GetBool(Tag tag) const;
    [[nodiscard]] std::string GetMessage() const;

    bool GetTagType(unsigned int tagId, DirectlyLocatedType& type) const override;
    bool ResolveTagAddress(const PointerValue* pointer, unsigned int size, CMemoryRef& out) const override;

 private:
    void SetBool(Tag tag, bool value);

    int contents_ = 6'000;
    std::array<CMemoryBlock, kMessage + 1> tags_;
};
