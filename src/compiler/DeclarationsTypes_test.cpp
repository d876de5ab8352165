#include <gtest/gtest.h>

#include "compiler/DeclarationTesting.h"

namespace tn61131::st::testing {
namespace {

struct TypeCase {
    std::string_view declaration;  ///< of a global variable x
    std::string_view type;         ///< as printed, and its size
};

TEST(DeclarationTypes, ElementaryAndTextTypesHaveTheirSizes) {
    const TypeCase cases[] = {
        {"BOOL", "BOOL 1"},
        {"SINT", "SINT 1"},
        {"lword", "LWORD 8"},
        {"LREAL", "LREAL 8"},
        {"TIME", "TIME 8"},
        {"LTIME", "TIME 8"},
        {"DATE", "DATE 4"},
        {"LDATE", "DATE 4"},
        {"TOD", "TIME_OF_DAY 4"},
        {"LTOD", "TIME_OF_DAY 4"},
        {"LTIME_OF_DAY", "TIME_OF_DAY 4"},
        {"DT", "DATE_AND_TIME 8"},
        {"LDT", "DATE_AND_TIME 8"},
        {"LDATE_AND_TIME", "DATE_AND_TIME 8"},
        {"CHAR", "CHAR 1"},
        {"WCHAR", "WCHAR 2"},
        {"STRING", "STRING[254] 256"},
        {"STRING[20]", "STRING[20] 22"},
        {"STRING(20)", "STRING[20] 22"},
        {"STRING[2 * 10]", "STRING[20] 22"},
        {"STRING[65533]", "STRING[65533] 65535"},
        {"WSTRING[3]", "WSTRING[3] 8"},
        {"WSTRING[32766]", "WSTRING[32766] 65534"},
        {"INT(-3..7)", "INT(-3..7) 2"},
        {"USINT(0..255)", "USINT(0..255) 1"},
        {"POINTER TO INT", "POINTER TO INT 8"},
        {"REF_TO BYTE", "POINTER TO BYTE 8"},
        {"REFERENCE TO REAL", "REFERENCE TO REAL 8"},
        {"POINTER TO POINTER TO ARRAY[0..1] OF INT", "POINTER TO POINTER TO ARRAY[0..1] OF INT 8"},
        {"ARRAY[0..9] OF INT", "ARRAY[0..9] OF INT 20"},
        {"ARRAY[-2..2, 1..3] OF REAL", "ARRAY[-2..2, 1..3] OF REAL 60"},
        {"ARRAY[0..1] OF ARRAY[0..2] OF BYTE", "ARRAY[0..1] OF ARRAY[0..2] OF BYTE 6"},
        {"ARRAY[1..3] OF STRING[5]", "ARRAY[1..3] OF STRING[5] 21"},
        {"ARRAY[1..2] OF TON", "ARRAY[1..2] OF TON 58"},
        {"ARRAY[0..268435455] OF BYTE", "ARRAY[0..268435455] OF BYTE 268435456"},
        {"STRUCT a : BOOL; b : LREAL; c : BYTE; END_STRUCT", "STRUCT 10"},
        {"UNION a : BOOL; b : LREAL; c : WORD; END_UNION", "UNION 8"},
        {"(red, green)", "enumeration 2"},
        {"CTU", "CTU 11"},
    };
    for (const TypeCase& each : cases) {
        Resolved project("VAR_GLOBAL x : " + std::string(each.declaration) + "; END_VAR");
        EXPECT_EQ(project.TypeOf("x"), each.type) << each.declaration;
        EXPECT_EQ(project.Messages(), "") << each.declaration;
    }
}

TEST(DeclarationTypes, StringWithoutLengthFollowsTheSwitch) {
    CompileOptions options;
    options.switches.stringLength = 80;
    Resolved project("VAR_GLOBAL x : STRING; y : WSTRING; END_VAR", options);
    EXPECT_EQ(project.TypeOf("x"), "STRING[80] 82");
    EXPECT_EQ(project.TypeOf("y"), "WSTRING[80] 162");
}

TEST(DeclarationTypes, ConstantsMayBeBoundsWhereverTheyStand) {
    Resolved project(std::vector<std::string>{R"(
TYPE Table : ARRAY[LOW..HIGH] OF STRING[LENGTH]; END_TYPE
FUNCTION_BLOCK Fb
VAR_INPUT a : ARRAY[0..COUNT - 1] OF INT; END_VAR
VAR CONSTANT COUNT : INT := HIGH * 2; END_VAR
END_FUNCTION_BLOCK
)",
                                              R"(
VAR_GLOBAL t : Table; f : Fb; END_VAR
VAR_GLOBAL CONSTANT LOW : INT := -HIGH; HIGH : INT := 4; LENGTH : INT := 10; END_VAR
)"});
    EXPECT_EQ(project.Messages(), "");
    EXPECT_EQ(project.TypeOf("t"), "ARRAY[-4..4] OF STRING[10] 108");
    EXPECT_EQ(project.TypeOf("Fb.a"), "ARRAY[0..7] OF INT 16");
    EXPECT_EQ(project.LayoutOf("Fb"), "EN@0 ENO@1 a@2 18");
}

TEST(DeclarationTypes, StructuresArePackedWithTheBaseFirst) {
    Resolved project(R"(
TYPE
  Base : STRUCT a : BYTE; b : DINT; END_STRUCT;
  Derived EXTENDS Base : STRUCT c : BOOL; d : ARRAY[0..2] OF Inner; END_STRUCT;
  Inner : STRUCT x : INT; y : LREAL; END_STRUCT;
  Both : UNION i : Inner; w : ARRAY[0..1] OF LWORD; b : BOOL; END_UNION;
END_TYPE
)");
    EXPECT_EQ(project.Messages(), "");
    EXPECT_EQ(project.LayoutOf("Base"), "a@0 b@1 5");
    EXPECT_EQ(project.LayoutOf("Derived"), "a@0 b@1 c@5 d@6 36");
    EXPECT_EQ(project.LayoutOf("Both"), "i@0 w@0 b@0 16");
}

TEST(DeclarationTypes, PointersMayGoToWhatIsNotCompleteYet) {
    Resolved project(R"(
TYPE
  Node : STRUCT next : POINTER TO Node; children : POINTER TO ARRAY[1..10] OF Node; list : List; END_STRUCT;
  List : ARRAY[0..1] OF POINTER TO Node;
  Far : POINTER TO Later;
  Later : ARRAY[0..1] OF Holder;
  Holder : STRUCT far : Far; END_STRUCT;
END_TYPE
FUNCTION_BLOCK Fb
VAR self : POINTER TO Fb; all : POINTER TO ARRAY[0..3] OF Fb; END_VAR
VAR_IN_OUT other : Fb; END_VAR
END_FUNCTION_BLOCK
VAR_GLOBAL n : Node; f : Far; END_VAR
)");
    EXPECT_EQ(project.Messages(), "");
    EXPECT_EQ(project.LayoutOf("Node"), "next@0 children@8 list@16 32");
    EXPECT_EQ(project.TypeOf("f"), "POINTER TO ARRAY[0..1] OF Holder 8");
    EXPECT_EQ(project.LayoutOf("Fb"), "EN@0 ENO@1 other@2 self@10 all@18 26");
    for (const ArrayType* array : project.GetProject().types.GetLateArrays()) {
        EXPECT_TRUE(array->isComplete);
        EXPECT_EQ(array->size, array->bounds.front().GetCount() * array->element->size);
    }
}

TEST(DeclarationTypes, EnumerationsCountOnFromTheValueBefore) {
    Resolved project(R"(
TYPE
  Colour : (Red, Green := 5, Blue, Dark := 7 + 8) := Blue;
  Small : (A := 16#FE, B) BYTE;
END_TYPE
VAR_GLOBAL c : Colour; s : Small; d : Colour := Dark; e : Colour := Colour#Green; END_VAR
)");
    EXPECT_EQ(project.Messages(), "");
    EXPECT_EQ(project.TypeOf("c"), "Colour 2");
    EXPECT_EQ(project.TypeOf("s"), "Small 1");
    EXPECT_EQ(project.GlobalData(), "0600FE0F000500");
}

TEST(DeclarationTypes, AmbiguousEnumerationValuesComeWithAllMeanings) {
    Resolved project("TYPE A : (on, off); B : (off, on); END_TYPE VAR_GLOBAL x : INT; END_VAR");
    EXPECT_EQ(project.Messages(), "");
    Project& inner = project.GetProject();
    const Symbol* symbol = project.GetDeclarations().Lookup(inner.names.Find("ON"), &inner.globalScope);
    ASSERT_NE(symbol, nullptr);
    ASSERT_NE(symbol->alternatives, nullptr);
    ASSERT_EQ(symbol->alternatives->size(), 2U);
    EXPECT_EQ((*symbol->alternatives)[0].member->value, 0);
    EXPECT_EQ((*symbol->alternatives)[1].member->value, 1);
}

TEST(DeclarationTypes, VariablesMayHaveTheNameOfAType) {
    Resolved project(R"(
FUNCTION_BLOCK Motor VAR_INPUT ton : TON; END_VAR END_FUNCTION_BLOCK
VAR_GLOBAL motor : Motor; Valve : INT; END_VAR
TYPE Valve : STRUCT a : Motor; END_STRUCT END_TYPE
PROGRAM Main VAR motor : Motor; v : Valve; END_VAR END_PROGRAM
)");
    EXPECT_EQ(project.Messages(), "");
    EXPECT_EQ(project.TypeOf("motor"), "Motor 31");
    EXPECT_EQ(project.TypeOf("Main.motor"), "Motor 31");
    EXPECT_EQ(project.TypeOf("Main.v"), "Valve 31");
}

TEST(DeclarationTypes, NamespacesAreRooms) {
    Resolved project(R"(
NAMESPACE Plant.Cell
TYPE Size : ARRAY[0..3] OF BYTE; END_TYPE
FUNCTION_BLOCK Box VAR s : Size; END_VAR END_FUNCTION_BLOCK
END_NAMESPACE
VAR_GLOBAL b : Plant.Cell.Box; END_VAR
)");
    EXPECT_EQ(project.Messages(), "");
    EXPECT_EQ(project.TypeOf("b"), "Box 6");
}

struct ErrorCase {
    std::string_view text;
    std::vector<Reported> reported;
};

TEST(DeclarationTypes, ErrorsStandWhereTheyBelong) {
    using enum DiagnosticCode;
    const ErrorCase cases[] = {
        {"VAR_GLOBAL x : Intt; END_VAR", {{1, 16, UnknownType}}},
        {"VAR_GLOBAL x : INT; y : x; END_VAR", {{1, 25, NotAType}}},
        {"VAR_GLOBAL x : Nope.Thing; END_VAR", {{1, 16, UnknownNamespace}}},
        {"VAR_GLOBAL x : STRING[0]; END_VAR", {{1, 23, BadStringLength}}},
        {"VAR_GLOBAL x : STRING[65534]; END_VAR", {{1, 23, BadStringLength}}},
        {"VAR_GLOBAL x : WSTRING[32767]; END_VAR", {{1, 24, BadStringLength}}},
        {"VAR_GLOBAL x : ARRAY[3..1] OF INT; END_VAR", {{1, 22, EmptyBounds}}},
        {"VAR_GLOBAL x : ARRAY[0..2147483648] OF INT; END_VAR", {{1, 25, BoundTooLarge}}},
        {"VAR_GLOBAL x : ARRAY[0..268435456] OF BYTE; END_VAR", {{1, 16, TypeTooLarge}}},
        {"VAR_GLOBAL x : ARRAY[0..65535, 0..65535] OF LREAL; END_VAR", {{1, 16, TypeTooLarge}}},
        {"VAR_GLOBAL x : ARRAY[*] OF INT; END_VAR", {{1, 16, OpenArray}}},
        {"VAR_GLOBAL x : REAL(0..1); END_VAR", {{1, 16, NotAnIntegerType}}},
        {"VAR_GLOBAL x : INT(5..1); END_VAR", {{1, 20, EmptyBounds}}},
        {"VAR_GLOBAL x : BYTE(0..256); END_VAR", {{1, 24, ValueOutOfRange}}},
        {"TYPE S : STRUCT a : S; END_STRUCT END_TYPE", {{1, 6, SelfReference}}},
        {"TYPE S : STRUCT a : ARRAY[0..1] OF T; END_STRUCT; T : STRUCT s : S; END_STRUCT END_TYPE",
         {{1, 6, SelfReference}}},
        {"TYPE A : B; B : C; C : A; END_TYPE", {{1, 6, SelfReference}}},
        {"TYPE A : ARRAY[0..SIZEOF(x)] OF INT; END_TYPE VAR_GLOBAL x : A; END_VAR", {{1, 6, SelfReference}}},
        {"FUNCTION_BLOCK F VAR f : G; END_VAR END_FUNCTION_BLOCK\n"
         "FUNCTION_BLOCK G VAR f : F; END_VAR END_FUNCTION_BLOCK",
         {{1, 16, SelfReference}}},
        {"FUNCTION_BLOCK F EXTENDS G END_FUNCTION_BLOCK\nFUNCTION_BLOCK G EXTENDS F END_FUNCTION_BLOCK",
         {{2, 16, SelfReference}}},
        {"FUNCTION_BLOCK F EXTENDS H END_FUNCTION_BLOCK", {{1, 26, UnknownBase}}},
        {"TYPE S EXTENDS X : STRUCT a : INT; END_STRUCT END_TYPE", {{1, 16, UnknownBase}}},
        {"TYPE S : STRUCT a : INT; A : BOOL; END_STRUCT END_TYPE", {{1, 26, DuplicateName}}},
        {"TYPE E : (a, b, A); END_TYPE", {{1, 17, DuplicateName}}},
        {"TYPE E : (a := 1, b := 1); END_TYPE", {{1, 19, DuplicateEnumValue}}},
        {"TYPE E : (a := 300) BYTE; END_TYPE", {{1, 16, ValueOutOfRange}}},
        {"TYPE E : (a := 255, b) BYTE; END_TYPE", {{1, 21, ValueOutOfRange}}},
        {"TYPE E : (a) REAL; END_TYPE", {{1, 14, NotAnIntegerType}}},
        {"TYPE E : INT; END_TYPE TYPE e : BOOL; END_TYPE", {{1, 29, DuplicateName}}},
    };
    for (const ErrorCase& each : cases) {
        Resolved project(each.text);
        EXPECT_EQ(project.Errors(), each.reported) << each.text << '\n' << project.Messages();
    }
}

TEST(DeclarationTypes, MisspeltTypesGetASuggestion) {
    Resolved project("TYPE Motor : INT; END_TYPE VAR_GLOBAL x : Motro; y : DNIT; END_VAR");
    EXPECT_NE(project.Messages().find("did you mean 'Motor'?"), std::string::npos) << project.Messages();
    EXPECT_NE(project.Messages().find("did you mean 'DINT'?"), std::string::npos) << project.Messages();
}

TEST(DeclarationTypes, NestingIsLimited) {
    const auto nested = [](int levels) {
        std::string text = "TYPE S0 : STRUCT a : BYTE; END_STRUCT;\n";
        for (int i = 1; i < levels; ++i) {
            text += "S" + std::to_string(i) + " : STRUCT a : S" + std::to_string(i - 1) + "; END_STRUCT;\n";
        }
        return text + "END_TYPE";
    };
    EXPECT_EQ(Resolved(nested(32)).Errors(), std::vector<Reported>{});
    EXPECT_EQ(Resolved(nested(33)).Errors(), (std::vector<Reported>{{33, 1, DiagnosticCode::TypeTooDeep}}));
}

TEST(DeclarationTypes, ChainsOfDeclarationsEndWithAMessage) {
    std::string text = "VAR_GLOBAL CONSTANT\n";
    for (int i = 0; i < 100000; ++i) {
        text += "c" + std::to_string(i) + " : DINT := c" + std::to_string(i + 1) + ";\n";
    }
    Resolved project(text + "c100000 : DINT := 1; END_VAR");
    EXPECT_FALSE(project.Errors().empty());
}

}  // namespace
}  // namespace tn61131::st::testing
