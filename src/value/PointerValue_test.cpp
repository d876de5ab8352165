#include "value/PointerValue.h"

#include <cstring>

#include <gtest/gtest.h>

namespace {

PointerValue Make(unsigned int kind, std::uint16_t frame, std::uint32_t offset) {
    return PointerValue{static_cast<LocationKind>(kind), frame, offset};
}

TEST(PointerValue, LayoutIsKindFrameOffset) {
    const PointerValue pointer = Make(2, 0x1234, 0x89ABCDEF);
    const unsigned char bytes[8] = {2, 0, 0x34, 0x12, 0xEF, 0xCD, 0xAB, 0x89};
    EXPECT_EQ(std::memcmp(&pointer, bytes, sizeof bytes), 0);
}

TEST(PointerValue, TextNamesTheLocation) {
    struct Row {
        unsigned int kind;
        const char* text;
    };
    constexpr Row kRows[] = {
        {0, "Null"},
        {1, "Global: 4294967295"},
        {2, "Local: Frame 65535 Offset 4294967295"},
        {3, "Temp: Frame 65535 Offset 4294967295"},
        {4, "Tag: Id 4294967295 Offset 65535"},
        {5, "GlobalConstant: 4294967295"},
        {6, "MemBlockPtr: Type 65535 Id 4294967295"},
        {7, "Invalid location 7"},
        {65535, "Invalid location 65535"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.kind);
        char buffer[PointerValue::kTextSize];
        std::memset(buffer, 'x', sizeof buffer);
        EXPECT_EQ(Make(row.kind, 65535, 4294967295U).FormatPointerValue(buffer), buffer);
        EXPECT_STREQ(buffer, row.text);
    }
}

TEST(PointerValue, AddOffsetMovesTheFieldOfItsKind) {
    struct Row {
        PointerValue before;
        unsigned int bytes;
        PointerValue after;
    };
    const Row rows[] = {
        {Make(0, 1, 2), 4, Make(0, 1, 2)},          {Make(1, 1, 2), 4, Make(1, 1, 6)},
        {Make(2, 1, 2), 4, Make(2, 1, 6)},          {Make(3, 1, 2), 4, Make(3, 1, 6)},
        {Make(4, 2, 7), 4, Make(4, 6, 7)},          {Make(5, 1, 2), 4, Make(5, 1, 6)},
        {Make(6, 1, 2), 4, Make(6, 1, 6)},          {Make(9, 1, 2), 4, Make(9, 1, 6)},
        {Make(1, 0, 0xFFFFFFFF), 2, Make(1, 0, 1)}, {Make(4, 0xFFFF, 7), 2, Make(4, 1, 7)},
        {Make(4, 5, 7), 0x10001, Make(4, 6, 7)},
    };
    for (const Row& row : rows) {
        PointerValue pointer = row.before;
        pointer.AddOffset(row.bytes);
        EXPECT_EQ(pointer, row.after) << static_cast<int>(row.before.location);
    }
}

TEST(PointerValue, EqualMeansAllThreeFields) {
    EXPECT_EQ(Make(1, 2, 3), Make(1, 2, 3));
    EXPECT_NE(Make(1, 2, 3), Make(2, 2, 3));
    EXPECT_NE(Make(1, 2, 3), Make(1, 3, 3));
    EXPECT_NE(Make(1, 2, 3), Make(1, 2, 4));
}

}  // namespace
