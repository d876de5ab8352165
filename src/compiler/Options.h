#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "value/ElementaryType.h"

namespace tn61131::st {

/// What a set of defaults for the switches is called.
enum class Profile : std::uint8_t { Iec, Codesys };

/// What the dialects disagree about. Each is set by `NAME=VALUE`; Options.cpp has the table of names, values and the
/// default of each profile.
struct Switches {
    enum class Bounds : std::uint8_t { Trap, Clamp, Off };
    enum class Strictness : std::uint8_t { Error, Warning, Silent };

    bool promoteIntegers = false;  ///< int-promotion=32: SINT, INT, USINT, UINT operands compute as DINT, UDINT
    Bounds bounds = Bounds::Trap;  ///< bounds=trap|clamp|off: what a computed index outside the array does
    bool recursion = false;        ///< recursion=on|off
    Strictness narrowing = Strictness::Error;  ///< narrowing=error|warning|silent: implicit conversions that lose
    bool bitInteger = false;           ///< bit-integer=on|off: bit strings and integers of the same or larger width mix
    bool dateSeconds = false;          ///< date-unit=second|native: number of a DATE or DT in conversions
    bool stringFail = true;            ///< string-conversion=fail|zero: what a text that is no number converts to
    bool dataPointers = false;         ///< string-pointers=data|object: ADR of a STRING leads to its first character
    bool nestedComments = true;        ///< nested-comments=on|off
    std::uint16_t stringLength = 254;  ///< string-length=N: of STRING and WSTRING without a length; 80 in codesys
    bool hints = false;                ///< hints=on|off: report accepted spellings of other dialects
};

/// Optimiser passes, each by its name in --set: optimise=NAME,...|all|none.
struct Passes {
    bool foldConstants = true;
    bool commonAddresses = true;
    bool inlineLeaves = true;
    bool deadStores = true;
    bool jumps = true;
};

/// A standalone expression or code block for the tables of the image.
struct StandaloneText {
    std::uint32_t id = 0;
    std::string text;
};

/// A directly located variable of the host: what %"address" and AT mean.
struct TagSymbol {
    std::string address{};  ///< as between the quotes, or without the percent sign
    std::uint32_t tagId = 0;
    std::uint16_t offset = 0;  ///< bytes within the tag
    ElementaryType type = ElementaryType::Undefined;
    bool readOnly = false;
    std::uint16_t length = 0;  ///< of STRING and WSTRING: units; 0: the default length of the dialect
};

struct CompileOptions {
    Profile profile = Profile::Iec;
    Switches switches{};
    Passes passes{};
    std::vector<StandaloneText> expressions;
    std::vector<StandaloneText> codeBlocks;
    std::vector<TagSymbol> tags;
};

/// A switch as users see it.
struct SwitchInfo {
    std::string_view name;
    std::string_view values;  ///< alternatives separated by |, or the limits of a number
    std::string_view iec;     ///< default of the profile
    std::string_view codesys;
    std::string_view meaning;
};

/// Every switch that SetSwitch() takes, for lists and help.
[[nodiscard]] std::vector<SwitchInfo> GetSwitches();

/// "iec", "codesys", "twincat" in any case; nothing for another name. Sets profile and switches to the profile's
/// defaults.
[[nodiscard]] bool SetProfile(std::string_view name, CompileOptions& options);
/// Takes `NAME=VALUE`, both in any case; the reason in `error`, and nothing changed, when there is no such switch or
/// value.
[[nodiscard]] bool SetSwitch(std::string_view assignment, CompileOptions& options, std::string& error);

}  // namespace tn61131::st
