#include <gtest/gtest.h>

#include "compiler/DeclarationTesting.h"

namespace tn61131::st::testing {
namespace {

std::string PlaceOf(Resolved& project, std::string_view path) {
    const Variable* variable = project.Find(path);
    if (variable == nullptr) return "none";
    const Storage& storage = variable->storage;
    const std::string offset = std::to_string(storage.offset);
    switch (storage.kind) {
        case StorageKind::Global: return "global " + offset;
        case StorageKind::Constant: return "constant " + offset;
        case StorageKind::Instance: return "instance " + offset;
        case StorageKind::InstancePointer: return "pointer " + offset;
        case StorageKind::Tag: return "tag " + std::to_string(storage.tagId) + "+" + offset;
        case StorageKind::None: return "value";
        default: return "unassigned";
    }
}

struct PlaceCase {
    std::string_view path;
    std::string_view place;
};

TEST(DeclarationLayout, GlobalsStaticsAndProgramsLieBehindEachOther) {
    Resolved project(std::vector<std::string>{R"(
PROGRAM Main
VAR t : TON; a : INT := 1; END_VAR
VAR_TEMP k : INT; END_VAR
VAR_INPUT i : BYTE := 2; END_VAR
VAR_OUTPUT o : BYTE := 3; END_VAR
VAR CONSTANT c : INT := 4; END_VAR
VAR_EXTERNAL g : INT; END_VAR
END_PROGRAM
FUNCTION F : INT VAR_STAT n : INT := 5; END_VAR VAR v : INT; END_VAR VAR_INPUT p : INT; END_VAR END_FUNCTION
)",
                                              R"(
VAR_GLOBAL g : INT := 16#1234; h : BYTE := 16#56; END_VAR
PROGRAM Second VAR x : WORD := 7; END_VAR END_PROGRAM
)"});
    EXPECT_EQ(project.Messages(), "");
    const PlaceCase cases[] = {
        {"g", "global 0"},      {"h", "global 2"},      {"F.n", "global 3"},      {"Main.i", "global 5"},
        {"Main.o", "global 6"}, {"Main.a", "global 7"}, {"Main.t", "global 9"},   {"Second.x", "global 38"},
        {"Main.g", "global 0"}, {"Main.c", "value"},    {"Main.k", "unassigned"}, {"F.v", "unassigned"},
        {"F.p", "unassigned"},  {"F.F", "unassigned"},
    };
    for (const PlaceCase& each : cases)
        EXPECT_EQ(PlaceOf(project, each.path), each.place) << each.path;
    EXPECT_EQ(project.GlobalData(),
              "341256"
              "0500"
              "02"
              "03"
              "0100" +
                  std::string(58, '0') + "0700");
    const std::vector<ProgramEntry>& programs = project.GetProject().programs;
    ASSERT_EQ(programs.size(), 2U);
    EXPECT_EQ(programs[0].instanceOffset, 5U);
    EXPECT_EQ(programs[0].pou->instanceSize, 33U);
    EXPECT_EQ(programs[1].instanceOffset, 38U);
    EXPECT_EQ(project.Find("Main.g")->aliasOf, project.Find("g"));
}

TEST(DeclarationLayout, InstancesFollowTheOrderOfTheGroups) {
    Resolved project(R"(
FUNCTION_BLOCK Base
VAR inst : TON; v : INT; END_VAR
VAR_IN_OUT io : LREAL; END_VAR
VAR_OUTPUT q : BOOL; END_VAR
VAR_INPUT a : INT; edge : BOOL F_EDGE; END_VAR
VAR_TEMP t : INT; END_VAR
VAR_STAT n : INT; END_VAR
VAR CONSTANT c : INT := 1; END_VAR
METHOD M : INT VAR_INST kept : INT; END_VAR VAR local : INT; END_VAR END_METHOD
END_FUNCTION_BLOCK
FUNCTION_BLOCK Derived EXTENDS Base
VAR_INPUT b : INT; END_VAR
VAR w : INT; END_VAR
END_FUNCTION_BLOCK
FUNCTION_BLOCK Odd
VAR_INPUT EN : INT; END_VAR
END_FUNCTION_BLOCK
FUNCTION_BLOCK Own
VAR_INPUT EN : BOOL; x : INT; END_VAR
VAR_OUTPUT ENO : BOOL; END_VAR
END_FUNCTION_BLOCK
)");
    EXPECT_EQ(project.Messages(), "");
    EXPECT_EQ(project.LayoutOf("Base"), "EN@0 ENO@1 a@2 edge@4 q@7 io@8 v@16 kept@18 inst@20 49");
    EXPECT_EQ(project.LayoutOf("Derived"), "EN@0 ENO@1 a@2 edge@4 q@7 io@8 v@16 kept@18 inst@20 b@49 w@51 53");
    EXPECT_EQ(project.LayoutOf("Odd"), "EN@0 ENO@1 EN@2 4");
    EXPECT_EQ(project.LayoutOf("Own"), "EN@0 ENO@1 x@2 4");
    EXPECT_EQ(PlaceOf(project, "Base.io"), "pointer 8");
    EXPECT_EQ(PlaceOf(project, "Base.t"), "unassigned");
    EXPECT_EQ(PlaceOf(project, "Base.n"), "global 0");
    EXPECT_EQ(PlaceOf(project, "Derived.a"), "instance 2");
    const Symbol* derived =
        project.GetDeclarations().Lookup(project.GetProject().names.Find("Derived"), &project.GetProject().globalScope);
    ASSERT_EQ(derived->pou->inputs.size(), 3U);
    EXPECT_EQ(derived->pou->inputs[2], project.Find("Derived.b"));
}

TEST(DeclarationLayout, LibraryBlocksHaveTheFieldsOfTheirRows) {
    Resolved project("TYPE T : TON; C : CTU; END_TYPE");
    EXPECT_EQ(project.LayoutOf("T"), "EN@0 ENO@1 IN@2 PT@3 Q@11 ET@12 START@20 FLAG@28 29");
    EXPECT_EQ(project.LayoutOf("C"), "EN@0 ENO@1 CU_EDGE@2 CU@3 CU_M@4 R@5 PV@6 Q@8 CV@9 11");
}

CompileOptions WithTags() {
    CompileOptions options;
    options.tags = {
        {.address = "Tank/Level", .tagId = 7, .offset = 2, .type = ElementaryType::Real, .readOnly = true},
        {.address = "QW5", .tagId = 9, .offset = 0, .type = ElementaryType::Word, .readOnly = false},
    };
    return options;
}

TEST(DeclarationLayout, AddressesAreTagsOrReservedAreas) {
    Resolved project(R"(
VAR_GLOBAL
  g : INT;
  level AT %"Tank/Level" : REAL;
  q AT %qw5 : WORD;
  w AT %IW1 : INT := 258;
  b AT %IB2 : BYTE;
  s AT %MB4 : STRUCT a : INT; b : LREAL; END_STRUCT;
  x AT %QX0.1 : BOOL := TRUE;
  y AT %Q0.1 : BOOL;
  z AT %QX0.0 : BOOL;
  r AT %ID1.2.3 : DWORD;
  chained AT lies : BYTE;
  lies AT g : BYTE;
END_VAR
FUNCTION_BLOCK Fb VAR a : DWORD; low AT a : WORD; END_VAR END_FUNCTION_BLOCK
PROGRAM Main VAR m AT %MW2 : WORD; n AT g : BYTE; END_VAR END_PROGRAM
)",
                     WithTags());
    EXPECT_EQ(project.Messages(), "");
    const PlaceCase cases[] = {
        {"g", "global 0"},
        {"level", "tag 7+2"},
        {"q", "tag 9+0"},
        // I: 4 bytes that IW1 reaches, then the cell of ID1.2.3.
        {"w", "global 4"},
        {"b", "global 4"},
        {"r", "global 6"},
        // Q: no bytes, then QX0.0 and QX0.1.
        {"z", "global 10"},
        {"x", "global 11"},
        {"y", "global 11"},
        // M: 14 bytes.
        {"s", "global 16"},
        {"Main.m", "global 16"},
        {"Main.n", "global 0"},
        {"chained", "global 0"},
        {"Fb.low", "instance 2"},
    };
    for (const PlaceCase& each : cases)
        EXPECT_EQ(PlaceOf(project, each.path), each.place) << each.path;
    EXPECT_TRUE(project.Find("level")->isReadOnly);
    EXPECT_EQ(project.GetProject().globalData.size(), 26U);
}

struct ErrorCase {
    std::string_view text;
    std::vector<Reported> reported;
};

TEST(DeclarationLayout, ErrorsStandWhereTheyBelong) {
    using enum DiagnosticCode;
    const ErrorCase cases[] = {
        {"VAR_GLOBAL a AT %\"Nope\" : INT; END_VAR", {{1, 17, UnknownAddress}}},
        {"VAR_GLOBAL a AT %\"Tank/Level\" : INT; END_VAR", {{1, 17, AddressTypeDiffers}}},
        {"VAR_GLOBAL a AT %\"Tank/Level\" : REAL := 5; END_VAR", {{1, 41, InitialIgnored}}},
        {"VAR_GLOBAL a AT %IX0.0 : INT; END_VAR", {{1, 17, AddressTypeDiffers}}},
        {"VAR_GLOBAL a AT %ML131071 : LWORD; END_VAR", {}},
        {"VAR_GLOBAL a AT %ML131072 : LWORD; END_VAR", {{1, 17, AddressTooHigh}}},
        {"VAR_GLOBAL a AT %IX1.0 : BOOL; b AT %IW0 : WORD; END_VAR", {{1, 17, AddressOverlaps}}},
        {"VAR_GLOBAL a AT %IX2.0 : BOOL; b AT %IW0 : WORD; END_VAR", {}},
        {"VAR_GLOBAL a AT %I* : BOOL; END_VAR", {{1, 17, AddressNotMapped}}},
        {"VAR_GLOBAL a : BYTE; b AT a : INT; END_VAR", {{1, 27, AliasTooLarge}}},
        {"VAR_GLOBAL a AT a : BYTE; END_VAR", {{1, 17, NoFixedPlace}}},
        {"VAR_GLOBAL a AT b : BYTE; b AT a : BYTE; END_VAR", {{1, 32, NoFixedPlace}}},
        {"VAR_GLOBAL a AT b : BYTE; b AT c : BYTE; c AT a : BYTE; END_VAR",
         {{1, 12, SelfReference}, {1, 27, SelfReference}}},
        {"FUNCTION_BLOCK A VAR_INPUT x : ARRAY[*] OF INT; END_VAR END_FUNCTION_BLOCK", {{1, 32, OpenArray}}},
        {"FUNCTION_BLOCK A VAR_IN_OUT x : ARRAY[*] OF INT; END_VAR END_FUNCTION_BLOCK", {}},
        {"FUNCTION A : INT VAR_INPUT x : ARRAY[*, *] OF INT; END_VAR END_FUNCTION", {}},
        {"TYPE S : STRUCT a AT %IX0.0 : BOOL; END_STRUCT END_TYPE", {{1, 17, NotSupported}}},
        {"VAR_GLOBAL a : INT; A : BOOL; END_VAR", {{1, 21, DuplicateName}}},
        {"VAR_GLOBAL a : INT; END_VAR FUNCTION A : INT END_FUNCTION", {{1, 38, DuplicateName}}},
        {"FUNCTION F : INT VAR f : INT; END_VAR END_FUNCTION", {{1, 22, DuplicateName}}},
        {"PROGRAM P VAR_EXTERNAL g : INT; END_VAR END_PROGRAM", {{1, 24, UnknownGlobal}}},
        {"PROGRAM P VAR_EXTERNAL g : INT; END_VAR END_PROGRAM VAR_GLOBAL g : DINT; END_VAR",
         {{1, 24, ExternalDiffers}}},
        {"PROGRAM P VAR_IN_OUT g : INT; END_VAR END_PROGRAM", {{1, 11, SectionNotAllowed}}},
        {"FUNCTION F : INT VAR_INST g : INT; END_VAR END_FUNCTION", {{1, 18, SectionNotAllowed}}},
        {"FUNCTION_BLOCK A VAR x : INT; END_VAR END_FUNCTION_BLOCK\n"
         "FUNCTION_BLOCK B EXTENDS A VAR X : INT; END_VAR END_FUNCTION_BLOCK",
         {{2, 32, DuplicateName}}},
        {"VAR_GLOBAL a : ARRAY[0..268435455] OF BYTE; b : BYTE; END_VAR", {{1, 45, MemoryTooLarge}}},
        {"FUNCTION_BLOCK A VAR x : ARRAY[0..268435455] OF BYTE; END_VAR END_FUNCTION_BLOCK", {{1, 16, TypeTooLarge}}},
        {"FUNCTION_BLOCK A VAR_IN_OUT x : INT := 5; END_VAR END_FUNCTION_BLOCK", {{1, 40, InitialNotWritable}}},
    };
    for (const ErrorCase& each : cases) {
        Resolved project(each.text, WithTags());
        EXPECT_EQ(project.Errors(), each.reported) << each.text << '\n' << project.Messages();
    }
}

TEST(DeclarationLayout, HidingAGlobalIsAHint) {
    CompileOptions options;
    options.switches.hints = true;
    Resolved project("VAR_GLOBAL a : INT; END_VAR\nPROGRAM P VAR A : INT; END_VAR END_PROGRAM", options);
    EXPECT_EQ(project.Errors(), (std::vector<Reported>{{2, 15, DiagnosticCode::HidesOther}}));
}

TEST(DeclarationLayout, LocatedVariablesOfBodiesShareTheAddress) {
    Resolved project("VAR_GLOBAL a AT %MW1 : INT; END_VAR", WithTags());
    EXPECT_EQ(project.Messages(), "");
    EXPECT_EQ(PlaceOf(project, "a"), "global 2");
}

TEST(DeclarationConfiguration, ProgramsRunAsDeclared) {
    Resolved project(R"(
PROGRAM Main VAR_INPUT sp : INT := 1; END_VAR VAR x : INT := 2; END_VAR END_PROGRAM
PROGRAM Alone VAR y : BYTE := 9; END_VAR END_PROGRAM
CONFIGURATION Plant
VAR_GLOBAL g : INT := 4; END_VAR
RESOURCE Cpu ON PLC
VAR_GLOBAL h : BYTE := 5; END_VAR
TASK Fast(INTERVAL := T#10ms, PRIORITY := 1);
TASK Event(SINGLE := go, PRIORITY := 2);
PROGRAM One WITH Fast : Main;
PROGRAM Two WITH Event : Main(sp := 8);
END_RESOURCE
END_CONFIGURATION
)");
    EXPECT_EQ(project.Messages(), "");
    Project& inner = project.GetProject();
    ASSERT_EQ(inner.tasks.size(), 2U);
    EXPECT_EQ(inner.tasks[0].intervalMs, 10);
    EXPECT_EQ(inner.tasks[0].priority, 1);
    EXPECT_EQ(inner.tasks[1].single, "go");
    ASSERT_EQ(inner.programs.size(), 3U);
    EXPECT_EQ(inner.names.GetSpelling(inner.programs[0].name), "One");
    EXPECT_EQ(inner.names.GetSpelling(inner.programs[1].name), "Two");
    EXPECT_EQ(inner.names.GetSpelling(inner.programs[2].name), "Alone");
    EXPECT_EQ(inner.names.GetSpelling(inner.programs[1].task), "Event");
    EXPECT_NE(inner.programs[0].pou, inner.programs[1].pou);
    EXPECT_EQ(project.GlobalData(),
              "0400"
              "05"
              "01000200"
              "09"
              "08000200");
    EXPECT_EQ(PlaceOf(project, "One.x"), "global 5");
    EXPECT_EQ(PlaceOf(project, "Two.x"), "global 10");
    EXPECT_EQ(PlaceOf(project, "Main.x"), "global 5");
}

TEST(DeclarationConfiguration, VariablesGetTheirAddressFromOutside) {
    Resolved project(R"(
PROGRAM Main VAR in AT %I* : BYTE; a : INT := 1; END_VAR END_PROGRAM
CONFIGURATION Plant
RESOURCE Cpu ON PLC
PROGRAM One : Main;
END_RESOURCE
VAR_CONFIG
  Cpu.One.in AT %IB3 : BYTE;
  One.a : INT := 7;
END_VAR
END_CONFIGURATION
)");
    EXPECT_EQ(project.Messages(), "");
    EXPECT_EQ(PlaceOf(project, "One.in"), "global 5");
    EXPECT_EQ(project.GlobalData(),
              "0700"
              "00000000");
}

TEST(DeclarationConfiguration, ErrorsStandWhereTheyBelong) {
    using enum DiagnosticCode;
    const std::string begin = "PROGRAM Main VAR_INPUT a : INT; END_VAR END_PROGRAM CONFIGURATION C RESOURCE R ON P\n";
    const std::string end = "\nEND_RESOURCE END_CONFIGURATION";
    const ErrorCase cases[] = {
        {"PROGRAM a : Mian;", {{2, 13, UnknownProgram}}},
        {"PROGRAM a WITH t : Main;", {{2, 16, UnknownTask}}},
        {"TASK t(INTERVALL := T#1s, PRIORITY := 1);", {{2, 8, UnknownTaskProperty}}},
        {"PROGRAM a : Main; PROGRAM A : Main;", {{2, 27, DuplicateName}}},
        {"PROGRAM a : Main(b := 1);", {{2, 18, NoSuchMember}}},
        {"PROGRAM a : Main; END_RESOURCE VAR_CONFIG a.b : INT := 1; END_VAR RESOURCE S ON P PROGRAM b : Main;",
         {{2, 43, UnknownName}}},
        {"PROGRAM a : Main; END_RESOURCE VAR_CONFIG a.a : DINT := 1; END_VAR RESOURCE S ON P PROGRAM b : Main;",
         {{2, 43, ConfigDiffers}}},
        {"PROGRAM a : Main; END_RESOURCE VAR_CONFIG a.a AT %IB0 : INT; END_VAR RESOURCE S ON P PROGRAM b : Main;",
         {{2, 43, NotSupported}}},
    };
    for (const ErrorCase& each : cases) {
        Resolved project(begin + std::string(each.text) + end);
        EXPECT_EQ(project.Errors(), each.reported) << each.text << '\n' << project.Messages();
    }
}

}  // namespace
}  // namespace tn61131::st::testing
