// Numbers to BOOL, integers, bit strings and reals.
#include <limits>
#include <vector>

#include "value/ValueTesting.h"

namespace {

using namespace value_testing;

class ConvertNumber : public ValueTest {};

struct Row {
    CValue from;
    CValue to;
};

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr long long kMinLInt = std::numeric_limits<long long>::min();
constexpr long long kMaxLInt = std::numeric_limits<long long>::max();
constexpr int kMinDInt = std::numeric_limits<int>::min();
constexpr int kMaxDInt = std::numeric_limits<int>::max();

TEST_F(ConvertNumber, ToBool) {
    const Row rows[] = {
        {CValue(true), CValue(true)},
        {Of(T::SInt, 0), CValue(false)},
        {Of(T::SInt, -1), CValue(true)},
        {Of(T::SInt, 0x100), CValue(false)},
        {Of(T::Byte, 2), CValue(true)},
        {Of(T::Int, 0x10000), CValue(false)},
        {Of(T::Word, 0x100), CValue(true)},
        {CValue(0), CValue(false)},
        {CValue(0x10000), CValue(true)},
        {Of(T::UDInt, 0x100000000), CValue(false)},
        {Of(T::LInt, 0x100000000), CValue(true)},
        {Of(T::ULInt, 0), CValue(false)},
        {CValue(0.0F), CValue(false)},
        {CValue(-0.0F), CValue(false)},
        {CValue(0.1F), CValue(true)},
        {CValue(0.0), CValue(false)},
        {CValue(-1e-300), CValue(true)},
        {CValue(kNaN), CValue(true)},
        {CValue(kInfinity), CValue(true)},
        {Of(T::Time, -1), CValue(true)},
        {Of(T::TimeOfDay, 0), CValue(false)},
        {Of(T::Date, 1), CValue(true)},
        {Of(T::DateAndTime, 0x100000000), CValue(true)},
    };
    for (const Row& row : rows)
        ExpectConversion(row.from, row.to);
}

TEST_F(ConvertNumber, CharactersAreTrueForFourLetters) {
    for (const T type : {T::Char, T::WChar}) {
        for (int unit = 0; unit < 256; ++unit) {
            const bool isTrue = unit == 'T' || unit == '1' || unit == 'Y' || unit == 'y';
            ExpectConversion(Of(type, unit), CValue(isTrue));
        }
    }
    ExpectConversion(Of(T::WChar, 0x0154), CValue(false));  // 'T' in its low byte
}

// Every integer target from every count: the low bits of the number extended to 64 bits.
TEST_F(ConvertNumber, IntegersExtendOrTruncate) {
    struct Source {
        CValue value;
        long long number;  // its 64-bit extension
    };
    const Source sources[] = {
        {CValue(false), 0},
        {CValue(true), 1},
        {Of(T::SInt, -1), -1},
        {Of(T::SInt, -128), -128},
        {Of(T::SInt, 127), 127},
        {Of(T::USInt, 255), 255},
        {Of(T::Byte, 0x80), 0x80},
        {Of(T::Char, 0xE9), 0xE9},
        {Of(T::Int, -32768), -32768},
        {Of(T::Int, 300), 300},
        {Of(T::UInt, 65535), 65535},
        {Of(T::Word, 0x8000), 0x8000},
        {Of(T::WChar, 0x20AC), 0x20AC},
        {CValue(-1), -1},
        {CValue(300), 300},
        {CValue(70000), 70000},
        {CValue(kMinDInt), kMinDInt},
        {CValue(kMaxDInt), kMaxDInt},
        {Of(T::UDInt, 4294967295), 4294967295},
        {Of(T::DWord, 0x80000000), 0x80000000},
        {Of(T::LInt, kMinLInt), kMinLInt},
        {Of(T::LInt, kMaxLInt), kMaxLInt},
        {Of(T::ULInt, -1), -1},
        {Of(T::LWord, 0x123456789ABCDEF0), 0x123456789ABCDEF0},
        {Of(T::Time, -1500), -1500},
        {Of(T::TimeOfDay, 4294967295), 4294967295},
        {Of(T::Date, 0x80000000), 0x80000000},
        {Of(T::DateAndTime, kMinLInt), kMinLInt},
    };
    for (const Source& source : sources) {
        for (const T target : {T::SInt, T::USInt, T::Byte, T::Int, T::UInt, T::Word, T::DInt, T::UDInt, T::DWord,
                               T::LInt, T::ULInt, T::LWord}) {
            ExpectConversion(source.value, Of(target, source.number));
        }
    }
}

TEST_F(ConvertNumber, RealsRoundHalvesToEven) {
    struct Source {
        double number;
        long long rounded;
    };
    constexpr Source kSources[] = {{0.0, 0},   {0.5, 0},   {-0.5, 0},   {0.75, 1},   {1.5, 2},     {2.5, 2}, {3.5, 4},
                                   {-2.5, -2}, {-3.5, -4}, {-1.25, -1}, {99.5, 100}, {100.5, 100}, {-0.0, 0}};
    for (const Source& source : kSources) {
        for (const T target : {T::SInt, T::Int, T::DInt, T::LInt}) {
            ExpectConversion(CValue(source.number), Of(target, source.rounded));
            ExpectConversion(CValue(static_cast<float>(source.number)), Of(target, source.rounded));
        }
        const long long unsignedResult = source.rounded < 0 ? 0 : source.rounded;
        for (const T target : {T::USInt, T::Byte, T::UInt, T::Word, T::UDInt, T::DWord, T::ULInt, T::LWord}) {
            ExpectConversion(CValue(source.number), Of(target, unsignedResult));
        }
    }
}

TEST_F(ConvertNumber, RealsSaturateAt32BitsBeforeTheyAreCut) {
    const Row rows[] = {
        {CValue(3.0e10F), CValue(kMaxDInt)},
        {CValue(-3.0e10F), CValue(kMinDInt)},
        {CValue(2147483647.0), CValue(kMaxDInt)},
        {CValue(2147483647.4), CValue(kMaxDInt)},
        {CValue(2147483648.0), CValue(kMaxDInt)},
        {CValue(-2147483648.0), CValue(kMinDInt)},
        {CValue(-2147483649.0), CValue(kMinDInt)},
        {CValue(3.0e10), Of(T::Int, -1)},
        {CValue(-3.0e10), Of(T::Int, 0)},
        {CValue(300.0F), Of(T::SInt, 44)},
        {CValue(-200.0F), Of(T::SInt, 56)},
        {CValue(-1.0F), Of(T::UDInt, 0)},
        {CValue(4294967295.0), Of(T::UDInt, 4294967295)},
        {CValue(4294967296.0), Of(T::DWord, 4294967295)},
        {CValue(1e300), Of(T::Byte, 255)},
        {CValue(65537.0), Of(T::Word, 1)},
        {CValue(-5.0), Of(T::USInt, 0)},
        {CValue(kNaN), CValue(0)},
        {CValue(kNaN), Of(T::UDInt, 0)},
        {CValue(kInfinity), CValue(0)},
        {CValue(-kInfinity), Of(T::SInt, 0)},
        {CValue(static_cast<float>(kInfinity)), Of(T::UInt, 0)},
    };
    for (const Row& row : rows)
        ExpectConversion(row.from, row.to);
}

TEST_F(ConvertNumber, RealsSaturateAt64Bits) {
    const Row rows[] = {
        {CValue(1e30), Of(T::LInt, kMaxLInt)},
        {CValue(-1e30), Of(T::LInt, kMinLInt)},
        {CValue(9223372036854775808.0), Of(T::LInt, kMaxLInt)},
        {CValue(9223372036854774784.0), Of(T::LInt, 9223372036854774784)},
        {CValue(-9223372036854775808.0), Of(T::LInt, kMinLInt)},
        {CValue(1e30), Of(T::ULInt, -1)},
        {CValue(18446744073709551616.0), Of(T::LWord, -1)},
        {CValue(18446744073709549568.0), Of(T::ULInt, -2048)},
        {CValue(9223372036854775808.0), Of(T::ULInt, kMinLInt)},
        {CValue(-1.0), Of(T::ULInt, 0)},
        {CValue(-1e30F), Of(T::LWord, 0)},
        {CValue(kNaN), Of(T::LInt, 0)},
        {CValue(kNaN), Of(T::ULInt, 0)},
        {CValue(kInfinity), Of(T::LInt, 0)},
        {CValue(-kInfinity), Of(T::LInt, 0)},
        {CValue(kInfinity), Of(T::LWord, 0)},
    };
    for (const Row& row : rows)
        ExpectConversion(row.from, row.to);
}

TEST_F(ConvertNumber, ToReals) {
    struct Source {
        CValue value;
        double number;
    };
    const Source sources[] = {
        {CValue(true), 1.0},
        {CValue(false), 0.0},
        {Of(T::SInt, -128), -128.0},
        {Of(T::USInt, 255), 255.0},
        {Of(T::Byte, 255), 255.0},
        {Of(T::Int, -1), -1.0},
        {Of(T::UInt, 65535), 65535.0},
        {Of(T::Word, 32768), 32768.0},
        {CValue(-5), -5.0},
        {Of(T::UDInt, 4294967295), 4294967295.0},
        {Of(T::DWord, 4294967295), 4294967295.0},
        {Of(T::LInt, kMinLInt), -9223372036854775808.0},
        {Of(T::LInt, kMaxLInt), 9223372036854775808.0},
        {Of(T::ULInt, -1), 18446744073709551616.0},
        {Of(T::LWord, -1), 18446744073709551616.0},
        {Of(T::Time, -1500), -1500.0},
        {Of(T::TimeOfDay, 86399999), 86399999.0},
        {Of(T::Date, 20000), 20000.0},
        {Of(T::DateAndTime, 86400000), 86400000.0},
    };
    for (const Source& source : sources) {
        ExpectConversion(source.value, CValue(source.number));
        ExpectConversion(source.value, CValue(static_cast<float>(source.number)));
    }
}

TEST_F(ConvertNumber, IntegersToRealRoundOnce) {
    // 2^24 + 1 lies between two singles: the even one is taken.
    ExpectConversion(CValue(16777217), CValue(16777216.0F));
    ExpectConversion(CValue(16777219), CValue(16777220.0F));
    // In two steps, by way of a double, this would go down to the even neighbour.
    ExpectConversion(Of(T::LInt, 0x4000004000000001), CValue(0x1.000002p62F));
    ExpectConversion(Of(T::ULInt, static_cast<long long>(0x8000008000000001)), CValue(0x1.000002p63F));
}

TEST_F(ConvertNumber, BetweenReals) {
    ExpectConversion(CValue(0.1F), CValue(static_cast<double>(0.1F)));
    ExpectConversion(CValue(0.1), CValue(0.1F));
    ExpectConversion(CValue(1e300), CValue(std::numeric_limits<float>::infinity()));
    ExpectConversion(CValue(kNaN), CValue(std::numeric_limits<float>::quiet_NaN()));
    ExpectConversion(CValue(-0.0F), CValue(-0.0));
}

}  // namespace
