// Sums and differences of pointers, times and dates.
#include <limits>

#include "value/OperatorTesting.h"

namespace {

using namespace value_testing;

class DateArithmetic : public OperatorTest {};

constexpr long long kHour = 3600000;
constexpr long long kDay = 86400000;
constexpr long long kMinTime = std::numeric_limits<long long>::min();
constexpr long long kMaxTime = std::numeric_limits<long long>::max();

CValue Time(long long ms) {
    return Of(T::Time, ms);
}
CValue TimeOfDay(long long ms) {
    return Of(T::TimeOfDay, ms);
}
CValue Date(long long days) {
    return Of(T::Date, days);
}
CValue DateAndTime(long long ms) {
    return Of(T::DateAndTime, ms);
}

struct Row {
    CValue left;
    CValue right;
    CValue expected;
};

TEST_F(DateArithmetic, Sums) {
    const Row rows[] = {
        {TimeOfDay(23 * kHour), Time(2 * kHour), TimeOfDay(1 * kHour)},
        {TimeOfDay(1 * kHour), Time(-2 * kHour), TimeOfDay(23 * kHour)},
        {TimeOfDay(0), Time(kDay - 1), TimeOfDay(kDay - 1)},
        {TimeOfDay(0), Time(kDay), TimeOfDay(0)},
        {TimeOfDay(1), Time(kDay - 1), TimeOfDay(0)},
        {TimeOfDay(1), Time(-1), TimeOfDay(0)},
        {TimeOfDay(0), Time(-1), TimeOfDay(kDay - 1)},
        {TimeOfDay(5), Time(10 * kDay + 5), TimeOfDay(10)},
        {TimeOfDay(5), Time(-10 * kDay - 6), TimeOfDay(kDay - 1)},
        {TimeOfDay(4294967295), Time(0), TimeOfDay(kDay - 1)},  // read as signed: -1
        {DateAndTime(kDay), Time(-1), DateAndTime(kDay - 1)},
        {DateAndTime(0), Time(-1), DateAndTime(-1)},
        {DateAndTime(-1), Time(1), DateAndTime(0)},
        {DateAndTime(kMaxTime), Time(kMaxTime), DateAndTime(-2)},
        {Date(10), Time(36 * kHour), Date(11)},
        {Date(10), Time(-36 * kHour), Date(9)},
        {Date(10), Time(kDay - 1), Date(10)},
        {Date(10), Time(-kDay + 1), Date(10)},
        {Date(0), Time(-kDay), Date(4294967295)},
        {Date(4294967295), Time(kDay), Date(0)},
        {Date(2), TimeOfDay(5), DateAndTime(2 * kDay + 5)},
        {Date(4294967295), TimeOfDay(4294967295), DateAndTime(4294967295 * kDay + 4294967295)},
    };
    for (const Row& row : rows)
        ExpectResult(row.left, Op::Add, row.right, row.expected);
}

TEST_F(DateArithmetic, Differences) {
    const Row rows[] = {
        {Date(10), Time(36 * kHour), Date(9)},
        {Date(10), Time(-36 * kHour), Date(11)},
        {Date(0), Time(kDay), Date(4294967295)},
        {Date(10), Date(12), Time(-2 * kDay)},
        {Date(12), Date(10), Time(2 * kDay)},
        {Date(0), Date(4294967295), Time(-4294967295 * kDay)},
        {TimeOfDay(5 * kHour), Time(2 * kHour), TimeOfDay(3 * kHour)},
        {TimeOfDay(1 * kHour), Time(2 * kHour), TimeOfDay(23 * kHour)},
        {TimeOfDay(1 * kHour), Time(26 * kHour), TimeOfDay(23 * kHour)},
        {TimeOfDay(1 * kHour), Time(-2 * kHour), TimeOfDay(3 * kHour)},
        {TimeOfDay(23 * kHour), Time(-2 * kHour), TimeOfDay(1 * kHour)},
        {TimeOfDay(5), Time(5), TimeOfDay(0)},
        {TimeOfDay(5), Time(kDay + 5), TimeOfDay(kDay)},  // whole days beyond: the end of the day, not its beginning
        {TimeOfDay(0), Time(-kDay), TimeOfDay(0)},
        {TimeOfDay(3), TimeOfDay(5), Time(-2)},
        {TimeOfDay(5), TimeOfDay(3), Time(2)},
        {TimeOfDay(0), TimeOfDay(4294967295), Time(1)},  // in 32 bits
        {DateAndTime(5), Time(7), DateAndTime(-2)},
        {DateAndTime(5), Time(-7), DateAndTime(12)},
        {DateAndTime(5), DateAndTime(7), Time(-2)},
        {DateAndTime(-1), DateAndTime(0), Time(-1)},
    };
    for (const Row& row : rows)
        ExpectResult(row.left, Op::Sub, row.right, row.expected);
}

TEST_F(DateArithmetic, ExtremeTimesWrap) {
    for (const long long time : {kMinTime, kMaxTime, kMinTime + 1}) {
        for (const CValue& left : {TimeOfDay(0), TimeOfDay(kDay - 1), TimeOfDay(4294967295), Date(0), Date(4294967295),
                                   DateAndTime(0), DateAndTime(-1)}) {
            for (const Op code : {Op::Add, Op::Sub}) {
                CValue result(left);
                CValue right = Time(time);
                EXPECT_TRUE(Apply(result, code, right));
                EXPECT_EQ(result.GetType(), left.GetType());
            }
        }
    }
    ExpectNoMessage();
    // 2^63 is 25975808 above a multiple of the day; 0 minus its negative wraps to the negative again.
    ExpectResult(TimeOfDay(0), Op::Add, Time(kMinTime), TimeOfDay(kDay - 25975808));
    ExpectResult(TimeOfDay(0), Op::Sub, Time(kMinTime), TimeOfDay(4294967296 - 25975808));
}

TEST_F(DateArithmetic, OtherPairsAreRefused) {
    struct Refused {
        CValue left;
        Op code;
        CValue right;
        Message id;
        const char* text;
    };
    const Refused rows[] = {
        {TimeOfDay(1), Op::Add, TimeOfDay(1), Message::OperatorNotSupported,
         "Operator '+' is not supported with type 'TIME_OF_DAY'."},
        {Date(1), Op::Add, Date(1), Message::OperatorNotSupported, "Operator '+' is not supported with type 'DATE'."},
        {DateAndTime(1), Op::Add, DateAndTime(1), Message::OperatorNotSupported,
         "Operator '+' is not supported with type 'DATE_AND_TIME'."},
        // Not symmetrical: the time stands on the right.
        {Time(1), Op::Add, TimeOfDay(1), Message::OperatorNotSupported,
         "Operator '+' is not supported with type 'TIME_OF_DAY'."},
        {TimeOfDay(1), Op::Add, Date(1), Message::OperatorNotSupported,
         "Operator '+' is not supported with type 'DATE'."},
        {Date(1), Op::Sub, TimeOfDay(1), Message::OperatorNotSupported,
         "Operator '-' is not supported with type 'DATE'."},
        {DateAndTime(1), Op::Sub, Date(1), Message::OperatorNotSupported,
         "Operator '-' is not supported with type 'DATE_AND_TIME'."},
        {TimeOfDay(1), Op::Mul, CValue(2), Message::OperatorNotSupported,
         "Operator '*' is not supported with type 'TIME_OF_DAY'."},
    };
    for (const Refused& row : rows)
        ExpectFailure(row.left, row.code, row.right, row.id, row.text);
}

TEST_F(DateArithmetic, PointersMoveByWhatIsAdded) {
    struct Moved {
        CValue pointer;
        CValue bytes;
        CValue expected;
    };
    const Moved rows[] = {
        {Ptr(LocationKind::Global, 0, 8), CValue(4), Ptr(LocationKind::Global, 0, 12)},
        {Ptr(LocationKind::Global, 0, 8), CValue(-4), Ptr(LocationKind::Global, 0, 4)},
        {Ptr(LocationKind::Local, 3, 8), Of(T::Byte, 255), Ptr(LocationKind::Local, 3, 263)},
        {Ptr(LocationKind::Tag, 2, 7), CValue(4), Ptr(LocationKind::Tag, 6, 7)},
        {Ptr(LocationKind::Null, 0, 0), CValue(4), Ptr(LocationKind::Null, 0, 0)},
        {Ptr(LocationKind::Global, 0, 8), CValue(2.5F), Ptr(LocationKind::Global, 0, 10)},
        {Ptr(LocationKind::Global, 0, 8), Str("4"), Ptr(LocationKind::Global, 0, 12)},
        {Ptr(LocationKind::Global, 0, 8), Time(4), Ptr(LocationKind::Global, 0, 12)},
    };
    for (const Moved& row : rows)
        ExpectResult(row.pointer, Op::Add, row.bytes, row.expected);
    CValue pointer = Ptr(LocationKind::Global, 0, 8);
    CValue bytes(4);
    EXPECT_TRUE(pointer.Add(log_, here_, bytes));
    EXPECT_THAT(bytes, IsValue(Of(T::UDInt, 4)));
}

TEST_F(DateArithmetic, PointersTakeNothingElse) {
    const CValue pointer = Ptr(LocationKind::Global, 0, 8);
    ExpectFailure(pointer, Op::Add, pointer, Message::ConversionNotSupported,
                  "Conversion from type 'POINTER' to 'UDINT' is not supported.");
    ExpectFailure(pointer, Op::Add, Str("x"), Message::InvalidInteger, "'x' is not a valid integer.");
    ExpectFailure(pointer, Op::Sub, CValue(4), Message::ConversionTargetNotSupported,
                  "Conversion to data type 'POINTER' not supported.");
    ExpectFailure(CValue(4), Op::Add, pointer, Message::ConversionTargetNotSupported,
                  "Conversion to data type 'POINTER' not supported.");
    ExpectFailure(pointer, Op::Sub, pointer, Message::OperatorNotSupported,
                  "Operator '-' is not supported with type 'POINTER'.");
}

}  // namespace
