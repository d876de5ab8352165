#include "platform/jsonata/DatePicture.h"

#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace tn61131::jsonata {
namespace {

/// Friday, 2018-03-23 10:33:36.617 UTC.
constexpr double kTime = 1521801216617;
/// Saturday, 2026-11-21 19:03:35.208 UTC.
constexpr double kNow = 1795287815208;

std::string Shown(const Result<std::string>& result) {
    return result ? *result : "!" + std::string(result.GetFailure().code);
}

/// The time as ISO text; "-" for no value.
std::string Shown(const Result<std::optional<double>>& result) {
    if (!result) return "!" + std::string(result.GetFailure().code);
    return *result ? Shown(FormatDateTime(**result, std::nullopt, std::nullopt)) : "-";
}

struct Row {
    std::string_view picture;
    std::string_view text;
};

TEST(FormatDateTime, FollowsThePicture) {
    constexpr Row kRows[] = {
        {"Hello", "Hello"},
        {"", ""},
        {"Year]]: <[Y0001]>", "Year]: <2018>"},
        {"[[Y]] a]b", "[Y] a]b"},
        {"[Y 0001]", "2018"},
        {"[Y]|[Y2]|[Y02]|[Y,2]|[Y,*-2]|[Y,2-2]|[Y,5]|[Y,3-3]", "2018|2018|18|18|18|18|02018|018"},
        {"[Y9,999,*]", "2,018"},
        {"[YI]|[Yi]|[Yw]|[YWw]|[Ywo]|[Y1o]|[YA]",
         "MMXVIII|mmxviii|two thousand and eighteen|Two Thousand and Eighteen|two thousand and eighteenth|2018th|BYP"},
        {"[M]|[M01]|[MN]|[Mn]|[MNn]|[MNn,3-3]|[MNn,*-4]|[Mw]|[Ma]", "3|03|MARCH|march|March|Mar|Marc|three|c"},
        {"[D]|[D1o]|[Dwo]|[DWwo]|[D,3]|[D\u0660\u0661]", "23|23rd|twenty-third|Twenty-Third|023|\u0662\u0663"},
        {"[d]|[d001]|[dI]", "82|082|LXXXII"},
        {"[F]|[FN]|[FNn]|[FNn,3-3]|[F1]|[F01]", "friday|FRIDAY|Friday|Fri|5|05"},
        {"[X0001]-W[W01]-[F1]", "2018-W12-5"},
        {"week [w] of [xNn]", "week 4 of March"},
        {"[H]|[H01]|[h]|[h01]|[P]|[PN]", "10|10|10|10|am|AM"},
        {"[m]|[m1]|[s]|[s1]", "33|33|36|36"},
        {"[f]|[f001]|[f01]|[f1,1-1]|[f00001]", "617|617|61|6|61700"},
        {"[C] [E] [EN]", "ISO ISO ISO"},
        {"[Z]|[z]|[Z0]|[Z01]|[Z0101]|[Z01:01]|[Z0:01]|[Z01:01t]|[Z0101t]|[z0]",
         "+00:00|GMT+00:00|+0|+00|+0000|+00:00|+0:00|Z|Z|GMT+0"},
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(Shown(FormatDateTime(kTime, row.picture, std::nullopt)), row.text) << row.picture;
    }
}

TEST(FormatDateTime, FractionsKeepTheirLeadingZeros) {
    EXPECT_EQ(Shown(FormatDateTime(7, "[f]|[f001]|[f0001]|[f01]", std::nullopt)), "007|007|0070|00");
    EXPECT_EQ(Shown(FormatDateTime(500, "[f,1-3]|[f,2-3]|[f##1]", std::nullopt)), "5|50|5");
}

TEST(FormatDateTime, LooksFromTheTimeZone) {
    constexpr std::string_view kPicture = "[D] [H01]:[m01] [Z]|[z]|[Z0]|[Z0101t]";
    struct ZoneRow {
        std::string_view zone;
        std::string_view text;
    };
    constexpr ZoneRow kRows[] = {
        {"+0100", "23 11:33 +01:00|GMT+01:00|+1|+0100"},    {"-0500", "23 05:33 -05:00|GMT-05:00|-5|-0500"},
        {"+0530", "23 16:03 +05:30|GMT+05:30|+5:30|+0530"}, {"-0330", "23 07:03 -03:30|GMT-03:30|-3:30|-0330"},
        {"+01:00", "23 11:33 +01:00|GMT+01:00|+1|+0100"},   {"0000", "23 10:33 +00:00|GMT+00:00|+0|Z"},
        {"+1400", "24 00:33 +14:00|GMT+14:00|+14|+1400"},   {"Z", "23 10:33 +00:00|GMT+00:00|+0|Z"},
    };
    for (const ZoneRow& row : kRows) {
        EXPECT_EQ(Shown(FormatDateTime(kTime, kPicture, row.zone)), row.text) << row.zone;
    }
    for (const std::string_view zone : {"", "abc", "+", "+ 100", "+0160", "+12345", "+01:0", "1e2", "UTC"}) {
        EXPECT_EQ(Shown(FormatDateTime(kTime, kPicture, zone)), "!T0410") << zone;
    }
}

TEST(FormatDateTime, WithoutPictureIsISO) {
    struct TimeRow {
        double millis;
        std::string_view text;
    };
    constexpr TimeRow kRows[] = {
        {0, "1970-01-01T00:00:00.000Z"},
        {-1, "1969-12-31T23:59:59.999Z"},
        {1.9, "1970-01-01T00:00:00.001Z"},
        {-62167219200000, "0000-01-01T00:00:00.000Z"},
        {253402300799999, "9999-12-31T23:59:59.999Z"},
        {253402300800000, "+010000-01-01T00:00:00.000Z"},
        {-62167219200001, "-000001-12-31T23:59:59.999Z"},
        {8.64e15, "+275760-09-13T00:00:00.000Z"},
        {-8.64e15, "-271821-04-20T00:00:00.000Z"},
    };
    for (const TimeRow& row : kRows) {
        EXPECT_EQ(Shown(FormatDateTime(row.millis, std::nullopt, std::nullopt)), row.text);
    }
    EXPECT_EQ(Shown(FormatDateTime(kTime, std::nullopt, "-0500")), "2018-03-23T05:33:36.617-05:00");
    for (const double millis :
         {8.64e15 + 1, -1e300, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(Shown(FormatDateTime(millis, std::nullopt, std::nullopt)), "!D1001");
    }
}

// ISO 8601's weeks begin on Monday; the first one is that of the first Thursday.
TEST(FormatDateTime, WeeksFollowISO8601) {
    constexpr Row kRows[] = {
        {"2005-01-01", "2004-W53-6"}, {"2005-01-02", "2004-W53-7"}, {"2005-12-31", "2005-W52-6"},
        {"2006-01-01", "2005-W52-7"}, {"2007-01-01", "2007-W01-1"}, {"2007-12-31", "2008-W01-1"},
        {"2008-12-29", "2009-W01-1"}, {"2009-12-31", "2009-W53-4"}, {"2010-01-03", "2009-W53-7"},
        {"0004-12-27", "0004-W53-1"}, {"2016-02-29", "2016-W09-1"},
    };
    for (const Row& row : kRows) {
        const Result<double> millis = ParseISODateTime(row.picture);
        ASSERT_TRUE(millis);
        EXPECT_EQ(Shown(FormatDateTime(*millis, "[X0001]-W[W01]-[F1]", std::nullopt)), row.text) << row.picture;
    }
}

TEST(DatePicture, RefusesWhatIsNone) {
    constexpr Row kRows[] = {
        {"[Y", "!D3135"},
        {"[YN]-[M", "!D3135"},
        {"[Q]", "!D3132"},
        {"[]", "!D3132"},
        {"[\u00E9]", "!D3132"},
        {"[YN]", "!D3133"},
        {"[DNn]", "!D3133"},
        {"[fN]", "!D3133"},
        {"[Z010101t]", "!D3134"},
        {"[ZN]", "!D3134"},
        {"[Yo]", "!D3130"},
        {"[Y#]", "!D3130"},
        {"[Y0\u0660]", "!D3131"},
        {"[Y,x]", "!D3130"},
        {"[Y,1001]", "!D3130"},
        {"[Y,1-x]", "!D3130"},
        {"[Y,99999999999999999999]", "!D3130"},
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(Shown(FormatDateTime(kTime, row.picture, std::nullopt)), row.text) << row.picture;
        EXPECT_EQ(Shown(ParseDateTime("2018", row.picture, kNow)), row.text) << row.picture;
    }
    EXPECT_EQ(FormatDateTime(kTime, "[Q]", std::nullopt).GetFailure().value, "Q");
    EXPECT_EQ(FormatDateTime(kTime, "[DN]", std::nullopt).GetFailure().value, "D");
    EXPECT_EQ(Shown(ParseDateTime("ISO", "[C]", kNow)), "!D3133") << "nothing to read";
}

struct ParseRow {
    std::string_view text;
    std::string_view picture;
    std::string_view expected;
};

TEST(ParseDateTime, ReadsWhatThePictureShows) {
    constexpr ParseRow kRows[] = {
        {"Hello", "Hello", "-"},
        {"2018", "[Y1]", "2018-01-01T00:00:00.000Z"},
        {"2018-03-27", "[Y1]-[M01]-[D01]", "2018-03-27T00:00:00.000Z"},
        {"20180205", "[Y0001][M01][D01]", "2018-02-05T00:00:00.000Z"},
        {"20240101123849", "[Y0000][M00][D00][H00][m00][s00]", "2024-01-01T12:38:49.000Z"},
        {"2nd 12 2012", "[D1o] [M01] [Y0001]", "2012-12-02T00:00:00.000Z"},
        {"ae C mmxviii", "[Da] [MA] [Yi]", "2018-03-31T00:00:00.000Z"},
        {"27th April 2008", "[D1o] [MNn] [Y0001]", "2008-04-27T00:00:00.000Z"},
        {"27 APRIL 2008", "[D] [MN] [Y]", "2008-04-27T00:00:00.000Z"},
        {"27 april 2008", "[D] [Mn] [Y]", "2008-04-27T00:00:00.000Z"},
        {"Wed, 14th Nov 2018", "[FNn,3-3], [D1o] [MNn,3-3] [Y]", "2018-11-14T00:00:00.000Z"},
        {"twenty-first August two thousand and seventeen", "[Dw] [MNn] [Yw]", "2017-08-21T00:00:00.000Z"},
        {"4/4/2018 12:06 am", "[D1]/[M1]/[Y0001] [h]:[m] [P]", "2018-04-04T00:06:00.000Z"},
        {"4/4/2018 12:06 pm", "[D1]/[M1]/[Y0001] [h]:[m] [P]", "2018-04-04T12:06:00.000Z"},
        {"4/4/2018 11:30 PM", "[D1]/[M1]/[Y0001] [h]:[m] [P]", "2018-04-04T23:30:00.000Z"},
        {"2018-094", "[Y0001]-[d001]", "2018-04-04T00:00:00.000Z"},
        {"2018--180", "[Y]--[d]", "2018-06-29T00:00:00.000Z"},
        {"2018-366 10", "[Y]-[d] [H]", "2019-01-01T10:00:00.000Z"},
        {"2018-02-30", "[Y]-[M]-[D]", "2018-03-02T00:00:00.000Z"},
        {"2018-13-01", "[Y]-[M]-[D]", "2019-01-01T00:00:00.000Z"},
        {"98", "[Y01]", "1998-01-01T00:00:00.000Z"},
        {"0098", "[Y0001]", "0098-01-01T00:00:00.000Z"},
        {"\u0662\u0660\u0661\u0668", "[Y\u0660\u0660\u0660\u0661]", "2018-01-01T00:00:00.000Z"},
        {"2,018", "[Y9,999,*]", "2018-01-01T00:00:00.000Z"},
        {"[2018].(x)", "[[[Y]]].(x)", "2018-01-01T00:00:00.000Z"},
        {"2020 X", "[Y] x", "2020-01-01T00:00:00.000Z"},
        {"1:2:3.5", "[H]:[m]:[s].[f]", "2026-11-21T01:02:03.500Z"},
        {"1:2:3.1239", "[H]:[m]:[s].[f001]", "2026-11-21T01:02:03.123Z"},
        {"2020-09-09 08:00 +02:00", "[Y]-[M]-[D] [H]:[m] [Z]", "2020-09-09T06:00:00.000Z"},
        {"2020-09-09 08:00 -0030", "[Y]-[M]-[D] [H]:[m] [Z0101]", "2020-09-09T08:30:00.000Z"},
        {"2020-09-09 12:00 GMT-5", "[Y]-[M]-[D] [H]:[m] [z01]", "2020-09-09T17:00:00.000Z"},
        {"2020-09-09 12:00 GMT", "[Y]-[M]-[D] [H]:[m] [z]", "2020-09-09T12:00:00.000Z"},
        {"2020-09-09 12:00Z", "[Y]-[M]-[D] [H]:[m][Z0101t]", "2020-09-09T12:00:00.000Z"},
        // What the text does not say is of the present before it, and least behind it.
        {"13:45", "[H]:[m]", "2026-11-21T13:45:00.000Z"},
        {"02", "[M]", "2026-02-01T00:00:00.000Z"},
        {"5", "[D]", "2026-11-05T00:00:00.000Z"},
        {"30", "[s]", "2026-11-21T19:03:30.000Z"},
        {"2018-22", "[Y]-[D]", "!D3136"},
        {"5-22 23:59", "[M]-[D] [m]:[s]", "!D3136"},
        {"2018 10", "[Y] [H]", "!D3136"},
        {"2018-3-2-5", "[X]-[x]-[w]-[F1]", "!D3136"},
    };
    for (const ParseRow& row : kRows) {
        EXPECT_EQ(Shown(ParseDateTime(row.text, row.picture, kNow)), row.expected) << row.text << " by " << row.picture;
    }
}

TEST(ParseDateTime, GivesNoValueForOtherTexts) {
    constexpr ParseRow kRows[] = {
        {"2018", "", ""},
        {"", "[Y]", ""},
        {"x2018", "[Y]", ""},
        {"2018 ", "[Y]", ""},
        {"-2018", "[Y]", ""},
        {"2018 foo", "[Y] [MNn]", ""},
        {"Foo 2018", "[FNn] [Y]", ""},
        {"11 xx", "[h] [P]", ""},
        {"999999", "[Y]", ""},
        {"1 2018", "[D1o] [Y]", ""},
        {"axb2018", "a.b[Y]", ""},
        {"99999999999", "[D]", ""},
        {"2018", "[Y][P]", ""},
    };
    for (const ParseRow& row : kRows) {
        EXPECT_EQ(Shown(ParseDateTime(row.text, row.picture, kNow)), "-") << row.text << " by " << row.picture;
    }
}

TEST(ParseISODateTime, ReadsFromYearToOffset) {
    constexpr Row kRows[] = {
        {"2018", "2018-01-01T00:00:00.000Z"},
        {"2018-02", "2018-02-01T00:00:00.000Z"},
        {"2017-10-30", "2017-10-30T00:00:00.000Z"},
        {"2017-10-30Z", "2017-10-30T00:00:00.000Z"},
        {"2017-10-30T15:28:34Z", "2017-10-30T15:28:34.000Z"},
        {"2017-10-30T15:28:34", "2017-10-30T15:28:34.000Z"},
        {"2018-02-01T09:42:13.123+0000", "2018-02-01T09:42:13.123Z"},
        {"2018-02-01T09:42:13.1239+05:30", "2018-02-01T04:12:13.123Z"},
        {"2018-02-01T09:42:13.1-0100", "2018-02-01T10:42:13.100Z"},
        {"2018-02-01T24:00:00Z", "2018-02-02T00:00:00.000Z"},
        {"0000", "0000-01-01T00:00:00.000Z"},
        {"2016-02-29", "2016-02-29T00:00:00.000Z"},
    };
    for (const Row& row : kRows) {
        const Result<double> millis = ParseISODateTime(row.picture);
        ASSERT_TRUE(millis) << row.picture;
        EXPECT_EQ(Shown(FormatDateTime(*millis, std::nullopt, std::nullopt)), row.text) << row.picture;
    }
    for (const std::string_view text : {"",
                                        "Z",
                                        "18",
                                        "2018-1-1",
                                        "20180201",
                                        "2018-02-03 11:15:33",
                                        "2018-13-01",
                                        "2018-00-01",
                                        "2018-01-32",
                                        "2018-01-01T10:60:00Z",
                                        "2018-01-01T10:00:60Z",
                                        "2018-01-01T24:00:01Z",
                                        "2018-01-01T10:00Z",
                                        "2018-01-01T",
                                        "2018-01-01T10:00:00.Z",
                                        "2018-01-01T10:00:00+24:00",
                                        "2018-01-01T10:00:00+01",
                                        "2018-01-01+01:00",
                                        "2018 ",
                                        "2018-",
                                        "2018-01-01T10:00:00ZZ"}) {
        const Result<double> millis = ParseISODateTime(text);
        ASSERT_FALSE(millis) << text;
        EXPECT_EQ(millis.GetFailure().code, "D3110");
        EXPECT_EQ(millis.GetFailure().value, text);
    }
}

// What a picture of all components writes is read back.
TEST(DatePicture, RoundTrips) {
    constexpr std::string_view kPictures[] = {
        "[Y0001]-[M01]-[D01]T[H01]:[m01]:[s01].[f001][Z01:01t]",
        "[FNn], [D1o] [MNn] [YI] [h]:[m]:[s].[f] [PN] [z]",
        "[Yw]/[Mi]/[Dwo]-[H]-[m]-[s]-[f001]-[Z0101]",
        "[Y]-[d001]T[H]:[m]:[s].[f001]",
    };
    // Years below 100 have two digits, which are those of the twentieth century.
    for (double millis = -59000000000000; millis < 253402300799999; millis += 987654321987) {
        for (const std::string_view picture : kPictures) {
            const std::string text = Shown(FormatDateTime(millis, picture, std::nullopt));
            const Result<std::optional<double>> parsed = ParseDateTime(text, picture, kNow);
            ASSERT_TRUE(parsed) << text;
            EXPECT_EQ(*parsed, std::optional(millis)) << text << " by " << picture;
        }
    }
}

}  // namespace
}  // namespace tn61131::jsonata
