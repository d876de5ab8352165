// Conversions to TIME, TIME_OF_DAY, DATE and DATE_AND_TIME.
#include <limits>

#include "value/ValueTesting.h"

namespace {

using namespace value_testing;

class ConvertDate : public ValueTest {};

struct Row {
    CValue from;
    long long to;
};

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr long long kMinLInt = std::numeric_limits<long long>::min();
constexpr long long kMaxLInt = std::numeric_limits<long long>::max();

TEST_F(ConvertDate, ToTimeTakesCountsUnscaled) {
    const Row rows[] = {
        {CValue(true), 1},
        {Of(T::SInt, -1), -1},
        {Of(T::USInt, 255), 255},
        {Of(T::Byte, 255), 255},
        {Of(T::Int, -300), -300},
        {Of(T::UInt, 65535), 65535},
        {Of(T::Word, 65535), 65535},
        {CValue(-5), -5},
        {Of(T::UDInt, 4294967295), 4294967295},
        {Of(T::DWord, 4294967295), 4294967295},
        {Of(T::LInt, kMinLInt), kMinLInt},
        {Of(T::ULInt, -1), -1},
        {Of(T::LWord, 5), 5},
        {Of(T::TimeOfDay, 86399999), 86399999},
        {Of(T::Date, 3), 3},
        {Of(T::DateAndTime, 86400001), 86400001},
    };
    for (const Row& row : rows)
        ExpectConversion(row.from, Of(T::Time, row.to));
}

TEST_F(ConvertDate, RealsToTimeAreTruncated) {
    const Row rows[] = {
        {CValue(1.9F), 1},
        {CValue(-1.9F), -1},
        {CValue(1.9), 1},
        {CValue(-0.9), 0},
        {CValue(1e30), kMaxLInt},
        {CValue(-1e30), kMinLInt},
        {CValue(kInfinity), kMaxLInt},
        {CValue(-kInfinity), kMinLInt},
        {CValue(static_cast<float>(kInfinity)), kMaxLInt},
        {CValue(kNaN), 0},
    };
    for (const Row& row : rows)
        ExpectConversion(row.from, Of(T::Time, row.to));
}

TEST_F(ConvertDate, ToTimeOfDay) {
    const Row rows[] = {
        {CValue(true), 1},
        {CValue(false), 0},
        {Of(T::SInt, -1), 4294967295},  // not reduced
        {Of(T::Int, -1), 4294967295},
        {Of(T::Int, 32767), 32767},
        {Of(T::USInt, 255), 255},
        {Of(T::Byte, 255), 255},
        {Of(T::UInt, 65535), 65535},
        {Of(T::Word, 65535), 65535},
        {CValue(86399999), 86399999},
        {CValue(86400000), 0},
        {CValue(-1), 4294967295 % 86400000},
        {Of(T::UDInt, 86400005), 5},
        {Of(T::DWord, 4294967295), 4294967295 % 86400000},
        {Of(T::Date, 86400007), 7},
        {Of(T::LInt, 86400009), 9},
        {Of(T::LInt, -86400009), 4294967296 - 9},
        {Of(T::LInt, kMinLInt), 4294967296 - 25975808},  // 2^63 is 25975808 above a multiple of the day
        {Of(T::Time, -1500), 4294967296 - 1500},
        {Of(T::Time, 90000000), 3600000},
        {Of(T::ULInt, -1), 51951615},
        {Of(T::LWord, 86400001), 1},
        {Of(T::DateAndTime, 86400000LL * 20000 + 12345), 12345},
    };
    for (const Row& row : rows)
        ExpectConversion(row.from, Of(T::TimeOfDay, row.to));
}

TEST_F(ConvertDate, TimeOfDayOfItsOwnTypeStaysButTheMemberReduces) {
    CValue value = Of(T::TimeOfDay, 86400005);
    EXPECT_TRUE(value.ChangeType(log_, here_, T::TimeOfDay));
    EXPECT_THAT(value, IsValue(Of(T::TimeOfDay, 86400005)));
    EXPECT_TRUE(value.ChangeTypeToTOD(log_, here_));
    EXPECT_THAT(value, IsValue(Of(T::TimeOfDay, 5)));
}

TEST_F(ConvertDate, RealsToTimeOfDayKeepTheFractionOfTheDay) {
    const Row rows[] = {
        {CValue(0.0), 0},
        {CValue(43200000.0), 43200000},
        {CValue(86400000.0), 0},
        {CValue(129600000.0), 43200000},
        {CValue(43200000.0F), 43200000},
        {CValue(129600000.0F), 43200000},
        {CValue(-43200000.0), 0},
        {CValue(-1.0F), 0},
        {CValue(kNaN), 0},
        {CValue(kInfinity), 0},
        {CValue(-kInfinity), 0},
        {CValue(static_cast<float>(kInfinity)), 0},
    };
    for (const Row& row : rows)
        ExpectConversion(row.from, Of(T::TimeOfDay, row.to));
}

TEST_F(ConvertDate, RealToTimeOfDayComputesInSinglePrecision) {
    // 8 ms behind a day: in single precision 1 day and 2^-23, that is 10.3 ms.
    ExpectConversion(CValue(86400008.0F), Of(T::TimeOfDay, 10));
    // In double precision the product lies just below 8 and is cut.
    ExpectConversion(CValue(86400008.0), Of(T::TimeOfDay, 7));
}

TEST_F(ConvertDate, ToDate) {
    const Row rows[] = {
        {CValue(true), 1},
        {Of(T::SInt, -1), 4294967295},
        {Of(T::Int, -2), 4294967294},
        {Of(T::USInt, 255), 255},
        {Of(T::Byte, 255), 255},
        {Of(T::UInt, 65535), 65535},
        {Of(T::Word, 65535), 65535},
        {CValue(-1), 4294967295},
        {Of(T::UDInt, 20000), 20000},
        {Of(T::DWord, 4294967295), 4294967295},
        {Of(T::TimeOfDay, 86399999), 86399999},
        {Of(T::LInt, 0x100000005), 5},
        {Of(T::ULInt, -1), 4294967295},
        {Of(T::LWord, 0x100000005), 5},
        {Of(T::Time, -1), 4294967295},
        {CValue(1.9F), 1},
        {CValue(20000.999), 20000},
        {CValue(-5.0), 0},
        {CValue(1e30), 4294967295},
        {CValue(kInfinity), 4294967295},
        {CValue(-kInfinity), 0},
        {CValue(kNaN), 0},
        {Of(T::DateAndTime, 86399999), 0},
        {Of(T::DateAndTime, 86400000), 1},
        {Of(T::DateAndTime, -1), static_cast<long long>(~0ULL / 86400000)},
    };
    for (const Row& row : rows)
        ExpectConversion(row.from, Of(T::Date, row.to));
}

TEST_F(ConvertDate, ToDateAndTime) {
    const Row rows[] = {
        {CValue(true), 1},
        {Of(T::SInt, -1), -1},
        {Of(T::Int, -2), -2},
        {CValue(-3), -3},
        {Of(T::USInt, 255), 255},
        {Of(T::Byte, 255), 255},
        {Of(T::UInt, 65535), 65535},
        {Of(T::Word, 65535), 65535},
        {Of(T::UDInt, 4294967295), 4294967295},
        {Of(T::DWord, 4294967295), 4294967295},
        {Of(T::TimeOfDay, 3600000), 3600000},
        {Of(T::Date, 1), 86400000},
        {Of(T::Date, 4294967295), 4294967295 * 86400000},
        {Of(T::LInt, -1), -1},
        {Of(T::ULInt, kMinLInt), kMinLInt},
        {Of(T::LWord, 7), 7},
        {Of(T::Time, -5), -5},
        {CValue(1.9F), 1},
        {CValue(-1.0), 0},
        {CValue(1e30), -1},
        {CValue(kInfinity), -1},
        {CValue(-kInfinity), 0},
        {CValue(kNaN), 0},
    };
    for (const Row& row : rows)
        ExpectConversion(row.from, Of(T::DateAndTime, row.to));
}

}  // namespace
