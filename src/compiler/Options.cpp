#include "compiler/Options.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "assembler/SymbolType.h"

namespace tn61131::st {

namespace {

// STRING(n) occupies n + 2 bytes and WSTRING(n) 2n + 2; a size must fit in 16 bits.
constexpr std::uint16_t kMaxDefaultLength = 32766;

struct SwitchRow {
    SwitchInfo info;
    /// Takes one of the values, in lower case; false for any other.
    bool (*set)(CompileOptions& options, std::string_view value);
};

struct PassRow {
    std::string_view name;
    bool Passes::*pass;
};

constexpr PassRow kPasses[] = {
    {"fold-constants", &Passes::foldConstants},
    {"common-addresses", &Passes::commonAddresses},
    {"inline-leaves", &Passes::inlineLeaves},
    {"dead-stores", &Passes::deadStores},
    {"jumps", &Passes::jumps},
};

// A switch of two values: `on` stands for true.
template <bool Switches::*member>
bool SetFlag(CompileOptions& options, std::string_view value, std::string_view on, std::string_view off) {
    if (value != on && value != off) return false;
    options.switches.*member = value == on;
    return true;
}

template <bool Switches::*member>
bool SetOnOff(CompileOptions& options, std::string_view value) {
    return SetFlag<member>(options, value, "on", "off");
}

bool SetBounds(CompileOptions& options, std::string_view value) {
    using Bounds = Switches::Bounds;
    if (value == "trap") {
        options.switches.bounds = Bounds::Trap;
    } else if (value == "clamp") {
        options.switches.bounds = Bounds::Clamp;
    } else if (value == "off") {
        options.switches.bounds = Bounds::Off;
    } else {
        return false;
    }
    return true;
}

bool SetNarrowing(CompileOptions& options, std::string_view value) {
    using Strictness = Switches::Strictness;
    if (value == "error") {
        options.switches.narrowing = Strictness::Error;
    } else if (value == "warning") {
        options.switches.narrowing = Strictness::Warning;
    } else if (value == "silent") {
        options.switches.narrowing = Strictness::Silent;
    } else {
        return false;
    }
    return true;
}

bool SetStringLength(CompileOptions& options, std::string_view value) {
    std::uint16_t length = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), length);
    if (error != std::errc() || end != value.data() + value.size()) return false;
    if (length == 0 || length > kMaxDefaultLength) return false;
    options.switches.stringLength = length;
    return true;
}

bool SetPasses(CompileOptions& options, std::string_view value) {
    Passes passes{};
    for (const PassRow& row : kPasses)
        passes.*row.pass = value == "all";
    if (value != "all" && value != "none") {
        for (std::size_t begin = 0; begin <= value.size();) {
            const std::size_t end = std::min(value.find(',', begin), value.size());
            const std::string_view name = value.substr(begin, end - begin);
            const auto* const row = std::find_if(std::begin(kPasses), std::end(kPasses),
                                                 [name](const PassRow& each) { return each.name == name; });
            if (row == std::end(kPasses)) return false;
            passes.*row->pass = true;
            begin = end + 1;
        }
    }
    options.passes = passes;
    return true;
}

constexpr SwitchRow kSwitches[] = {
    {{"int-promotion", "32|off", "off", "32", "integers of 8 and 16 bits compute in 32 bits"},
     [](CompileOptions& options, std::string_view value) {
         return SetFlag<&Switches::promoteIntegers>(options, value, "32", "off");
     }},
    {{"bounds", "trap|clamp|off", "trap", "trap", "what a computed index outside of its array does"}, SetBounds},
    {{"recursion", "on|off", "off", "on", "functions may call themselves"}, SetOnOff<&Switches::recursion>},
    {{"narrowing", "error|warning|silent", "error", "warning", "implicit conversions that can lose something"},
     SetNarrowing},
    {{"bit-integer", "on|off", "off", "on", "bit strings and integers of the same or a larger width mix"},
     SetOnOff<&Switches::bitInteger>},
    {{"date-unit", "native|second", "native", "second", "what the number of a DATE or DATE_AND_TIME counts"},
     [](CompileOptions& options, std::string_view value) {
         return SetFlag<&Switches::dateSeconds>(options, value, "second", "native");
     }},
    {{"string-conversion", "fail|zero", "fail", "zero", "what a text converts to that is no number"},
     [](CompileOptions& options, std::string_view value) {
         return SetFlag<&Switches::stringFail>(options, value, "fail", "zero");
     }},
    {{"string-pointers", "object|data", "object", "data",
      "where a pointer to a STRING leads: to its length or to its first character"},
     [](CompileOptions& options, std::string_view value) {
         return SetFlag<&Switches::dataPointers>(options, value, "data", "object");
     }},
    {{"nested-comments", "on|off", "on", "on", "comments inside of comments"}, SetOnOff<&Switches::nestedComments>},
    {{"string-length", "1..32766", "254", "80", "of STRING and WSTRING without a length"}, SetStringLength},
    {{"hints", "on|off", "off", "off", "report accepted spellings of other dialects"}, SetOnOff<&Switches::hints>},
    {{"optimise", "all|none|fold-constants,common-addresses,inline-leaves,dead-stores,jumps", "all", "all",
      "passes of the optimiser"},
     SetPasses},
};

struct ProfileRow {
    std::string_view name;
    Profile profile;
};

constexpr ProfileRow kProfiles[] = {
    {"iec", Profile::Iec},
    {"codesys", Profile::Codesys},
    {"twincat", Profile::Codesys},
};

}  // namespace

std::vector<SwitchInfo> GetSwitches() {
    std::vector<SwitchInfo> infos;
    for (const SwitchRow& row : kSwitches)
        infos.push_back(row.info);
    return infos;
}

bool SetProfile(std::string_view name, CompileOptions& options) {
    const auto* const row =
        std::find_if(std::begin(kProfiles), std::end(kProfiles),
                     [folded = FoldName(name)](const ProfileRow& each) { return each.name == folded; });
    if (row == std::end(kProfiles)) return false;
    options.profile = row->profile;
    for (const SwitchRow& each : kSwitches)
        (void)each.set(options, row->profile == Profile::Iec ? each.info.iec : each.info.codesys);
    return true;
}

bool SetSwitch(std::string_view assignment, CompileOptions& options, std::string& error) {
    const std::size_t equal = assignment.find('=');
    const std::string name = FoldName(assignment.substr(0, equal));
    const auto* const row = std::find_if(std::begin(kSwitches), std::end(kSwitches),
                                         [&name](const SwitchRow& each) { return each.info.name == name; });
    if (row == std::end(kSwitches)) {
        error = "there is no switch '" + std::string(assignment.substr(0, equal)) + "'";
        return false;
    }
    const std::string value = equal == std::string_view::npos ? "" : FoldName(assignment.substr(equal + 1));
    if (row->set(options, value)) return true;
    error = "'" + std::string(assignment) + "': " + name + " takes " + std::string(row->info.values);
    return false;
}

}  // namespace tn61131::st
