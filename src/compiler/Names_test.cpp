#include "compiler/Names.h"

#include <gtest/gtest.h>

namespace tn61131::st {
namespace {

TEST(NameTable, SpellingsOfOneNameShareItsNumberAndTheFirstIsKept) {
    NameTable names;
    const NameId name = names.Intern("MotorSpeed");
    EXPECT_EQ(names.Intern("MOTORSPEED"), name);
    EXPECT_EQ(names.Find("motorspeed"), name);
    EXPECT_EQ(names.GetSpelling(name), "MotorSpeed");
    EXPECT_EQ(names.GetFolded(name), "motorspeed");
    EXPECT_NE(names.Intern("Motor_Speed"), name);
}

TEST(NameTable, KeywordsHaveTheNumbersOfTheirRows) {
    NameTable names;
    EXPECT_EQ(names.GetCount(), kKeywords.size());
    EXPECT_EQ(KeywordOf(names.Intern("end_If")), Keyword::EndIf);
    EXPECT_EQ(KeywordOf(names.Intern("Xor")), Keyword::Xor);
    EXPECT_EQ(KeywordOf(names.Intern("xors")), Keyword::None);
}

TEST(NameTable, KeywordsAreSpelledAsTheSourcesDo) {
    NameTable names;
    const NameId step = names.Find("STEP");
    EXPECT_EQ(names.GetSpelling(step), "STEP");
    EXPECT_EQ(names.Intern("Step"), step);
    EXPECT_EQ(names.Intern("step"), step);
    EXPECT_EQ(names.GetSpelling(step), "Step");
}

TEST(NameTable, NoTextIsNoName) {
    NameTable names;
    EXPECT_EQ(names.Intern(""), NameId::None);
    EXPECT_EQ(names.Find(""), NameId::None);
    EXPECT_EQ(names.Find("unknown"), NameId::None);
}

TEST(NameTable, NamesStayWhatTheyAreWhenTheTableGrows) {
    NameTable names;
    const NameId first = names.Intern("first");
    const std::string_view spelling = names.GetSpelling(first);
    for (int i = 0; i < 20000; ++i) {
        const std::string name = "Name_" + std::to_string(i);
        EXPECT_EQ(names.GetSpelling(names.Intern(name)), name);
    }
    EXPECT_EQ(names.Find("FIRST"), first);
    EXPECT_EQ(names.GetSpelling(first).data(), spelling.data());
    EXPECT_EQ(names.GetCount(), kKeywords.size() + 20001);
    EXPECT_EQ(names.GetSpelling(names.Find("name_777")), "Name_777");
}

TEST(NameTable, OnlyAsciiLettersFold) {
    NameTable names;
    EXPECT_NE(names.Intern("\xC3\x84"), names.Intern("\xC3\xA4"));  // A and a with diaeresis
    EXPECT_NE(names.Intern("a["), names.Intern("a{"));              // 32 apart, like letters
}

}  // namespace
}  // namespace tn61131::st
