#include "compiler/Options.h"

#include <gtest/gtest.h>

namespace tn61131::st {
namespace {

bool AreEqual(const Switches& left, const Switches& right) {
    return left.promoteIntegers == right.promoteIntegers && left.bounds == right.bounds &&
           left.recursion == right.recursion && left.narrowing == right.narrowing &&
           left.bitInteger == right.bitInteger && left.dateSeconds == right.dateSeconds &&
           left.stringFail == right.stringFail && left.nestedComments == right.nestedComments &&
           left.stringLength == right.stringLength && left.hints == right.hints;
}

TEST(SetProfile, IecIsTheDefault) {
    CompileOptions options;
    ASSERT_TRUE(SetProfile("codesys", options));
    EXPECT_FALSE(AreEqual(options.switches, Switches{}));
    ASSERT_TRUE(SetProfile("IEC", options));
    EXPECT_EQ(options.profile, Profile::Iec);
    EXPECT_TRUE(AreEqual(options.switches, Switches{}));
}

TEST(SetProfile, CodesysAndTwincatHaveTheirDefaults) {
    for (const char* const name : {"codesys", "TwinCAT"}) {
        CompileOptions options;
        ASSERT_TRUE(SetProfile(name, options)) << name;
        EXPECT_EQ(options.profile, Profile::Codesys);
        EXPECT_TRUE(options.switches.promoteIntegers);
        EXPECT_TRUE(options.switches.recursion);
        EXPECT_EQ(options.switches.narrowing, Switches::Strictness::Warning);
        EXPECT_TRUE(options.switches.bitInteger);
        EXPECT_TRUE(options.switches.dateSeconds);
        EXPECT_FALSE(options.switches.stringFail);
        EXPECT_EQ(options.switches.stringLength, 80);
        EXPECT_EQ(options.switches.bounds, Switches::Bounds::Trap);
        EXPECT_TRUE(options.switches.nestedComments);
        EXPECT_FALSE(options.switches.hints);
    }
}

TEST(SetProfile, UnknownNameChangesNothing) {
    CompileOptions options;
    options.switches.hints = true;
    EXPECT_FALSE(SetProfile("iec3", options));
    EXPECT_FALSE(SetProfile("", options));
    EXPECT_TRUE(options.switches.hints);
}

struct Setting {
    const char* assignment;
    bool (*holds)(const CompileOptions&);
};

TEST(SetSwitch, TakesEveryValue) {
    using Bounds = Switches::Bounds;
    using Strictness = Switches::Strictness;
    constexpr Setting kSettings[] = {
        {"int-promotion=32", [](const CompileOptions& o) { return o.switches.promoteIntegers; }},
        {"int-promotion=off", [](const CompileOptions& o) { return !o.switches.promoteIntegers; }},
        {"bounds=clamp", [](const CompileOptions& o) { return o.switches.bounds == Bounds::Clamp; }},
        {"Bounds=OFF", [](const CompileOptions& o) { return o.switches.bounds == Bounds::Off; }},
        {"bounds=trap", [](const CompileOptions& o) { return o.switches.bounds == Bounds::Trap; }},
        {"recursion=on", [](const CompileOptions& o) { return o.switches.recursion; }},
        {"recursion=off", [](const CompileOptions& o) { return !o.switches.recursion; }},
        {"narrowing=warning", [](const CompileOptions& o) { return o.switches.narrowing == Strictness::Warning; }},
        {"narrowing=silent", [](const CompileOptions& o) { return o.switches.narrowing == Strictness::Silent; }},
        {"narrowing=error", [](const CompileOptions& o) { return o.switches.narrowing == Strictness::Error; }},
        {"bit-integer=on", [](const CompileOptions& o) { return o.switches.bitInteger; }},
        {"date-unit=second", [](const CompileOptions& o) { return o.switches.dateSeconds; }},
        {"date-unit=native", [](const CompileOptions& o) { return !o.switches.dateSeconds; }},
        {"string-pointers=data", [](const CompileOptions& o) { return o.switches.dataPointers; }},
        {"string-conversion=zero", [](const CompileOptions& o) { return !o.switches.stringFail; }},
        {"string-conversion=fail", [](const CompileOptions& o) { return o.switches.stringFail; }},
        {"nested-comments=off", [](const CompileOptions& o) { return !o.switches.nestedComments; }},
        {"string-length=1", [](const CompileOptions& o) { return o.switches.stringLength == 1; }},
        {"string-length=32766", [](const CompileOptions& o) { return o.switches.stringLength == 32766; }},
        {"hints=on", [](const CompileOptions& o) { return o.switches.hints; }},
        {"optimise=none", [](const CompileOptions& o) { return !o.passes.jumps && !o.passes.foldConstants; }},
        {"optimise=jumps,dead-stores",
         [](const CompileOptions& o) { return o.passes.jumps && o.passes.deadStores && !o.passes.inlineLeaves; }},
        {"optimise=all", [](const CompileOptions& o) { return o.passes.jumps && o.passes.commonAddresses; }},
    };
    CompileOptions options;
    for (const Setting& row : kSettings) {
        std::string error;
        EXPECT_TRUE(SetSwitch(row.assignment, options, error)) << row.assignment << ": " << error;
        EXPECT_TRUE(row.holds(options)) << row.assignment;
    }
}

struct Refusal {
    const char* assignment;
    const char* error;
};

TEST(SetSwitch, SaysWhatItTakes) {
    constexpr Refusal kRefusals[] = {
        {"speed=high", "there is no switch 'speed'"},
        {"", "there is no switch ''"},
        {"bounds", "'bounds': bounds takes trap|clamp|off"},
        {"bounds=", "'bounds=': bounds takes trap|clamp|off"},
        {"hints=yes", "'hints=yes': hints takes on|off"},
        {"string-length=0", "'string-length=0': string-length takes 1..32766"},
        {"string-length=32767", "'string-length=32767': string-length takes 1..32766"},
        {"string-length=8x", "'string-length=8x': string-length takes 1..32766"},
        {"string-length=-1", "'string-length=-1': string-length takes 1..32766"},
        {"string-length=99999999999", "'string-length=99999999999': string-length takes 1..32766"},
        {"optimise=jumps,",
         "'optimise=jumps,': optimise takes all|none|fold-constants,common-addresses,inline-leaves,dead-stores,jumps"},
    };
    for (const Refusal& row : kRefusals) {
        CompileOptions options;
        std::string error;
        EXPECT_FALSE(SetSwitch(row.assignment, options, error)) << row.assignment;
        EXPECT_EQ(error, row.error);
        EXPECT_TRUE(AreEqual(options.switches, Switches{})) << row.assignment;
        EXPECT_TRUE(options.passes.jumps) << row.assignment;
    }
}

TEST(GetSwitches, DefaultsAreValuesThatAreTaken) {
    for (const SwitchInfo& info : GetSwitches()) {
        for (const std::string_view value : {info.iec, info.codesys}) {
            CompileOptions options;
            std::string error;
            EXPECT_TRUE(SetSwitch(std::string(info.name) + '=' + std::string(value), options, error)) << error;
        }
        EXPECT_FALSE(info.meaning.empty());
    }
}

}  // namespace
}  // namespace tn61131::st
