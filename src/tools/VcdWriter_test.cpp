#include "tools/VcdWriter.h"

#include <limits>
#include <sstream>

#include <gtest/gtest.h>

#include "value/Value.h"

namespace tn61131 {
namespace {

/// Declares one variable and returns the changes that samples of it write, headers and times left out.
std::string ChangesOf(ElementaryType type, const std::vector<CValue>& samples) {
    std::ostringstream output;
    VcdWriter writer(output);
    writer.AddVariable("v", type);
    writer.WriteHeader();
    output.str("");
    for (const CValue& sample : samples)
        writer.Sample(0, {sample});
    std::string text = output.str();
    for (std::size_t at = text.find("#0\n"); at != std::string::npos; at = text.find("#0\n"))
        text.erase(at, 3);
    return text;
}

CValue Integer(long long value, ElementaryType type) {
    CValue result;
    result.SetInteger(value, type);
    return result;
}

CValue Time(long long milliseconds) {
    return CValue(milliseconds, ElementaryType::Time);
}

TEST(VcdWriter, WholeDumpOfTwoScopes) {
    std::ostringstream output;
    VcdWriter writer(output);
    writer.AddVariable("run", ElementaryType::Bool);
    writer.AddVariable("Main.level", ElementaryType::Real);
    writer.AddVariable("Main.timer.Q", ElementaryType::Bool);
    writer.AddVariable("Main.timer.ET", ElementaryType::Time);
    writer.AddVariable("Other.count", ElementaryType::Int);
    writer.WriteHeader();
    writer.Sample(1700000000000, {CValue(true), CValue(1.5F), CValue(false), Time(0), Integer(3, ElementaryType::Int)});
    writer.Sample(1700000000100,
                  {CValue(true), CValue(2.0F), CValue(false), Time(100), Integer(-1, ElementaryType::Int)});
    EXPECT_EQ(output.str(),
              "$version tn61131 $end\n"
              "$timescale 1 ms $end\n"
              "$var wire 1 ! run $end\n"
              "$scope module Main $end\n"
              "$var real 64 \" level $end\n"
              "$scope module timer $end\n"
              "$var wire 1 # Q $end\n"
              "$var real 64 $ ET $end\n"
              "$upscope $end\n"
              "$upscope $end\n"
              "$scope module Other $end\n"
              "$var wire 16 % count $end\n"
              "$upscope $end\n"
              "$enddefinitions $end\n"
              "#0\n"
              "1!\n"
              "r1.5 \"\n"
              "0#\n"
              "r0 $\n"
              "b11 %\n"
              "#100\n"
              "r2 \"\n"
              "r100 $\n"
              "b1111111111111111 %\n");
}

TEST(VcdWriter, ValuesByType) {
    struct Row {
        ElementaryType type;
        CValue value;
        const char* change;
    };
    const Row rows[] = {
        {ElementaryType::Bool, CValue(false), "0!\n"},
        {ElementaryType::Bool, CValue(true), "1!\n"},
        {ElementaryType::SInt, Integer(0, ElementaryType::SInt), "b0 !\n"},
        {ElementaryType::SInt, Integer(-128, ElementaryType::SInt), "b10000000 !\n"},
        {ElementaryType::SInt, Integer(127, ElementaryType::SInt), "b1111111 !\n"},
        {ElementaryType::Byte, Integer(0xA5, ElementaryType::Byte), "b10100101 !\n"},
        {ElementaryType::Char, Integer('A', ElementaryType::Char), "b1000001 !\n"},
        {ElementaryType::DInt, Integer(-2, ElementaryType::DInt), "b11111111111111111111111111111110 !\n"},
        {ElementaryType::ULInt, CValue(std::numeric_limits<unsigned long long>::max(), ElementaryType::ULInt),
         "b1111111111111111111111111111111111111111111111111111111111111111 !\n"},
        {ElementaryType::Real, CValue(0.1F), "r0.1 !\n"},
        {ElementaryType::LReal, CValue(0.1), "r0.1 !\n"},
        {ElementaryType::LReal, CValue(-1e300), "r-1e+300 !\n"},
        {ElementaryType::LReal, CValue(std::numeric_limits<double>::infinity()), "rinf !\n"},
        {ElementaryType::Time, Time(-1500), "r-1500 !\n"},
        {ElementaryType::String, CValue("tank 1\\\n", ElementaryType::String), "stank\\x201\\x5C\\x0A !\n"},
        {ElementaryType::WString, CValue("h\xC3\xB6he", ElementaryType::WString), "sh\xC3\xB6he !\n"},
        {ElementaryType::Date, CValue(1u, ElementaryType::Date), "s1970-01-02 !\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.change);
        EXPECT_EQ(ChangesOf(row.type, {row.value}), row.change);
    }
}

TEST(VcdWriter, UndefinedAndForeignValuesAreUnknown) {
    EXPECT_EQ(ChangesOf(ElementaryType::Bool, {CValue()}), "x!\n");
    EXPECT_EQ(ChangesOf(ElementaryType::Int, {CValue(true)}), "bx !\n");
    EXPECT_EQ(ChangesOf(ElementaryType::Real, {CValue(1.0)}), "rnan !\n");
    EXPECT_EQ(ChangesOf(ElementaryType::String, {CValue()}), "s !\n");
}

TEST(VcdWriter, OnlyChangesAreWritten) {
    EXPECT_EQ(ChangesOf(ElementaryType::Bool, {CValue(true), CValue(true), CValue(false), CValue(true)}),
              "1!\n0!\n1!\n");
}

TEST(VcdWriter, TimeIsRelativeAndNeverGoesBack) {
    std::ostringstream output;
    VcdWriter writer(output);
    writer.WriteHeader();
    output.str("");
    writer.Sample(std::numeric_limits<long long>::min(), {});
    writer.Sample(0, {});
    writer.Sample(-5, {});
    writer.Sample(std::numeric_limits<long long>::max(), {});
    EXPECT_EQ(output.str(), "#0\n#9223372036854775808\n#9223372036854775808\n#18446744073709551615\n");
}

TEST(VcdWriter, IdentifiersStayDistinctBeyondOneCharacter) {
    std::ostringstream output;
    VcdWriter writer(output);
    for (int i = 0; i < 94 * 95 + 1; ++i)
        writer.AddVariable("v", ElementaryType::Bool);
    writer.WriteHeader();
    EXPECT_NE(output.str().find("wire 1 ~ v"), std::string::npos);
    EXPECT_NE(output.str().find("wire 1 !! v"), std::string::npos);
    EXPECT_NE(output.str().find("wire 1 \"! v"), std::string::npos);
    EXPECT_NE(output.str().find("wire 1 ~~ v"), std::string::npos);
    EXPECT_NE(output.str().find("wire 1 !!! v"), std::string::npos);
}

TEST(VcdWriter, NamesLoseBracketsAndBlanks) {
    std::ostringstream output;
    VcdWriter writer(output);
    writer.AddVariable("Main.grid[2,0].x y", ElementaryType::Bool);
    writer.WriteHeader();
    EXPECT_NE(output.str().find("$scope module grid(2,0) $end\n$var wire 1 ! x_y $end\n"), std::string::npos);
}

}  // namespace
}  // namespace tn61131
