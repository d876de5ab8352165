#include "compiler/CheckerTestVariables.h"

namespace tn61131::st::testing {
namespace {

TEST(CheckerStatements, Forms) {
    ExpectForms(
        {
            {"IF b THEN i := 1; ELSIF b2 THEN i := 2; ELSE i := 3; END_IF;",
             "(if b ((:= i INT#1)) ((if b2 ((:= i INT#2)) ((:= i INT#3)))))"},
            {"CASE i OF 1: j := 1; 2..5, -7: j := 2; ELSE j := 3; END_CASE;",
             "(case i (1: ((:= j INT#1))) (2..5,-7: ((:= j INT#2))) else ((:= j INT#3)))"},
            {"CASE col OF Red: i := 1; Color#Green, Blue: i := 2; END_CASE;",
             "(case col (0: ((:= i INT#1))) (1,2: ((:= i INT#2))))"},
            {"CASE w OF 16#FF: i := 1; END_CASE;", "(case w (255: ((:= i INT#1))))"},
            {"CASE ul OF 18446744073709551615: ; 0: ; END_CASE;", "(case ul (-1: ()) (0: ()))"},
            {"CASE i OF ten: ; END_CASE;", "(case i (10: ()))"},
            {"FOR i := 1 TO 10 DO a[i] := 0; END_FOR;", "(for i INT#1 INT#10 ((:= a[?i] INT#0)))"},
            {"FOR i := j TO 1 BY -1 DO EXIT; END_FOR;", "(for i j INT#1 INT#-1 ((exit)))"},
            {"FOR d := i TO us BY j DO CONTINUE; END_FOR;", "(for d (DINT i) (DINT us) (DINT j) ((continue)))"},
            {"WHILE b DO i := 1; END_WHILE;", "(while b ((:= i INT#1)))"},
            {"REPEAT i := i + 1; UNTIL i > 3 END_REPEAT;", "(repeat ((:= i (ADD:INT i INT#1))) (GT:BOOL i INT#3))"},
            {"RETURN;", "(return)"},
            {"d := i := 5;", "(block ((:= i INT#5) (:= d (DINT i))))"},
            {"b S= i > 3;", "(if (GT:BOOL i INT#3) ((:= b BOOL#TRUE)))"},
            {"b R= b2;", "(if b2 ((:= b BOOL#FALSE)))"},
            {";;", ""},
        },
        OptionsOf("iec"));
}

TEST(CheckerStatements, Refusals) {
    ExpectMessages(
        {
            {"IF i THEN END_IF;", "4 ST0602 a condition must be BOOL, not INT"},
            {"WHILE 5 DO END_WHILE;", "7 ST0413 DINT does not convert to BOOL by itself: write DINT_TO_BOOL"},
            {"REPEAT UNTIL s END_REPEAT;", "14 ST0602 a condition must be BOOL, not STRING[254]"},
            {"CASE r OF 1: ; END_CASE;", "6 ST0603 CASE needs an integer or an enumeration, not REAL"},
            {"CASE i OF 1: ; 2, 1: ; END_CASE;", "19 ST0604 label 1 stands in another branch too"},
            {"CASE i OF 1..5: ; 3: ; END_CASE;", "19 ST0604 label 3 stands in another branch too"},
            {"CASE i OF 3: ; 1..5: ; END_CASE;", "16 ST0604 label 1..5 stands in another branch too"},
            {"CASE i OF 1..9: ; 2..3: ; 8: ; END_CASE;",
             "19 ST0604 label 2..3 stands in another branch too\n27 ST0604 label 8 stands in another branch too"},
            {"CASE i OF 5..3: ; END_CASE;", "11 ST0605 the range 5..3 is empty"},
            {"CASE us OF 256: ; END_CASE;", "12 ST0340 256 is outside the range of USINT"},
            {"CASE i OF j: ; END_CASE;", "11 ST0341 this is no constant expression"},
            {"CASE col OF Apple: ; END_CASE;", "13 ST0427 Fruit and Color are different enumerations"},
            {"FOR r := 1 TO 5 DO END_FOR;",
             "5 ST0606 the counter of FOR must be a variable of an integer type, not REAL"},
            {"FOR ten := 1 TO 5 DO END_FOR;", "5 ST0416 'ten' cannot be written: it is a constant"},
            {"FOR i := 1 TO 5 BY 0 DO END_FOR;", "20 ST0607 the step of FOR is 0"},
            {"FOR us := 0 TO 300 DO END_FOR;", "16 ST0340 300 is outside the range of USINT"},
            {"FOR i := 0 TO d DO END_FOR;", "15 ST0414 DINT does not fit into INT without loss: write DINT_TO_INT"},
            {"EXIT;", "1 ST0611 EXIT stands outside of a loop"},
            {"IF b THEN CONTINUE; END_IF;", "11 ST0611 CONTINUE stands outside of a loop"},
            {"i + 1;", "1 ST0616 this expression has no effect: it is no statement"},
            {"i;", "1 ST0616 this expression has no effect: it is no statement"},
            {"ABS(-5);", "1 ST0616 this expression has no effect: it is no statement"},
        },
        OptionsOf("iec"));
}

TEST(CheckerStatements, Warnings) {
    ExpectMessages(
        {
            {"FOR us := 0 TO 255 DO END_FOR;", "W 16 ST0608 the end of the loop is the highest value of USINT"},
            {"FOR us := 5 TO 254 DO END_FOR;", ""},
            {"FOR i := 5 TO -32768 BY -1 DO END_FOR;", "W 15 ST0608 the end of the loop is the lowest value of INT"},
            {"FOR u := 0 TO u2 - 1 DO END_FOR;",
             "W 15 ST0609 this end wraps to a large number when it would be negative: UINT is unsigned"},
            {"FOR i := 0 TO j - 1 DO END_FOR;", ""},
            {"FOR i := 1 TO 5 DO i := 3; END_FOR;", "W 20 ST0610 'i' counts a FOR loop and is changed in it"},
            {"FOR i := 1 TO 5 DO FOR i := 1 TO 2 DO END_FOR; END_FOR;",
             "W 24 ST0610 'i' counts a FOR loop and is changed in it"},
        },
        OptionsOf("iec"));
}

TEST(CheckerStatements, Hints) {
    CheckedText text(R"(
TYPE Color : (Red, Green); END_TYPE
FUNCTION F : INT
VAR unused, used : INT; c : Color; END_VAR
  CASE c OF Red: used := 1; END_CASE;
  RETURN;
  used := 2;
  used := 3;
END_FUNCTION)",
                     OptionsOf("iec", {"hints=on"}));
    EXPECT_EQ(text.Messages(),
              "W 3:10 ST0614 'F' is never given a result\n"
              "H 4:5 ST0613 'unused' is never used\n"
              "H 5:8 ST0615 CASE without ELSE has no label for 'Green'\n"
              "H 7:3 ST0612 this is never reached\n");
}

}  // namespace
}  // namespace tn61131::st::testing
