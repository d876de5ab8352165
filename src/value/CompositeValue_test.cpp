#include "value/CompositeValue.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <utility>
#include <vector>

#include <unistd.h>

#include "platform/BinaryStream.h"
#include "value/ValueTesting.h"

namespace {

using namespace value_testing;

std::string Printed(const CCompositeValue& composite) {
    CTextOutputString output;
    composite.Print(output);
    return output.GetText();
}

CCompositeValue DInts(unsigned int count) {
    std::vector<int> elements(count);
    for (unsigned int i = 0; i < count; ++i)
        elements[i] = static_cast<int>(i + 1);
    return CCompositeValue(T::DInt, count, elements.data());
}

CCompositeValue Loaded(std::vector<unsigned char> bytes, bool& failed) {
    CBinaryInputMemory input(bytes);
    CCompositeValue composite(T::Byte, 3, "old");
    composite.LoadCompositeValue(input);
    failed = input.HasFailed();
    return composite;
}

/// A file of its own for each process, removed at the end.
class FileOf {
 public:
    explicit FileOf(std::string_view content)
        : path_(std::filesystem::temp_directory_path() / ("tn61131-composite-" + std::to_string(getpid()))) {
        std::ofstream(path_, std::ios::binary) << content;
    }
    FileOf(const FileOf&) = delete;
    FileOf& operator=(const FileOf&) = delete;
    ~FileOf() {
        std::error_code ignored;  // a leftover in the temporary folder harms nobody
        std::filesystem::remove(path_, ignored);
    }
    CTNFilePath GetPath() const { return CTNFilePath(path_.string()); }

 private:
    std::filesystem::path path_;
};

TEST(CompositeValue, DefaultIsEmptyAndUndefined) {
    const CCompositeValue composite;
    EXPECT_TRUE(composite.IsUndefined());
    EXPECT_EQ(composite.GetCount(), 0U);
    EXPECT_EQ(composite.GetDataLength(), 0U);
    EXPECT_EQ(composite.GetData(), nullptr);
}

TEST(CompositeValue, HoldsACopyOfPackedElements) {
    unsigned short elements[] = {0x1122, 0x3344};
    const CCompositeValue composite(T::Word, 2, elements);
    elements[0] = 0;
    EXPECT_EQ(composite.GetType(), T::Word);
    EXPECT_EQ(composite.GetCount(), 2U);
    EXPECT_EQ(composite.GetDataLength(), 4U);
    const unsigned char bytes[] = {0x22, 0x11, 0x44, 0x33};
    EXPECT_EQ(std::memcmp(composite.GetData(), bytes, 4), 0);
}

TEST(CompositeValue, VariableSizeHasCountButNoData) {
    const CCompositeValue composite(T::String, 5, "abc");
    EXPECT_EQ(composite.GetCount(), 5U);
    EXPECT_EQ(composite.GetDataLength(), 0U);
    EXPECT_EQ(composite.GetData(), nullptr);
    CValue out(7);
    EXPECT_FALSE(composite.GetElement(0, out));
}

TEST(CompositeValue, MoreBytesThanALengthCanSayAreNoElements) {
    const unsigned char byte = 0;
    const CCompositeValue composite(T::LInt, 0x20000000, &byte);
    EXPECT_EQ(composite.GetCount(), 0U);
    EXPECT_EQ(composite.GetData(), nullptr);
}

TEST(CompositeValue, CopiesAreDeepAndSelfAssignmentIsSafe) {
    CCompositeValue original(T::Byte, 3, "abc");
    const CCompositeValue copy(original);
    CCompositeValue assigned(T::DInt, 1, "old!");
    assigned = original;
    for (const CCompositeValue* other : {&copy, &std::as_const(assigned)}) {
        EXPECT_EQ(other->GetType(), T::Byte);
        EXPECT_EQ(other->GetCount(), 3U);
        EXPECT_NE(other->GetData(), original.GetData());
        EXPECT_EQ(std::memcmp(other->GetData(), "abc", 3), 0);
    }
    const CCompositeValue& itself = original;
    original = itself;
    EXPECT_EQ(std::memcmp(original.GetData(), "abc", 3), 0);
}

TEST(CompositeGetElement, CountsFromZero) {
    const CCompositeValue composite = DInts(3);
    CValue out = Str("old");
    EXPECT_TRUE(composite.GetElement(0, out));
    EXPECT_THAT(out, IsValue(CValue(1)));
    EXPECT_TRUE(composite.GetElement(2, out));
    EXPECT_THAT(out, IsValue(CValue(3)));
}

TEST(CompositeGetElement, BeyondTheLastLeavesTheOutput) {
    for (const unsigned int index : {3U, 4U, 0xFFFFFFFFU}) {
        CValue out(7);
        EXPECT_FALSE(DInts(3).GetElement(index, out));
        EXPECT_THAT(out, IsValue(CValue(7)));
    }
}

TEST(CompositeGetElement, EveryFixedSizeTypeComesBack) {
    const unsigned char bytes[] = {1, 2, 3, 4, 5, 6, 7, 8};
    for (unsigned int code = 1; code <= 27; ++code) {
        const T type = static_cast<T>(code);
        if (CValueType(type).GetSize() == 0) continue;
        SCOPED_TRACE(code);
        CValue out;
        EXPECT_TRUE(CCompositeValue(type, 1, bytes).GetElement(0, out));
        EXPECT_EQ(out.GetType(), type);
    }
}

TEST(CompositePrint, AtMostSixteenElements) {
    struct Row {
        unsigned int count;
        const char* text;
    };
    constexpr Row kRows[] = {
        {0, "DINT[]"},
        {1, "DINT[ 1 ]"},
        {3, "DINT[ 1, 2, 3 ]"},
        {16, "DINT[ 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16 ]"},
        {17, "DINT[ 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, ... ]"},
    };
    for (const Row& row : kRows)
        EXPECT_EQ(Printed(DInts(row.count)), row.text);
}

TEST(CompositePrint, ElementsAreLiterals) {
    EXPECT_EQ(Printed(CCompositeValue(T::Byte, 3, "\x01\x02\xFF")), "BYTE[ 16#1, 16#2, 16#FF ]");
    EXPECT_EQ(Printed(CCompositeValue(T::Bool, 2, "\x01\x00")), "BOOL[ TRUE, FALSE ]");
    EXPECT_EQ(Printed(CCompositeValue()), "Undefined[]");
}

TEST(CompositeSave, IsTypeCountAndData) {
    CBinaryOutputBuffer output;
    CCompositeValue(T::Int, 2, "\x01\x02\x03\x04").SaveCompositeValue(output);
    EXPECT_THAT(output.GetData(), ::testing::ElementsAre(5, 2, 0, 0, 0, 1, 2, 3, 4));
}

TEST(CompositeSave, LoadsAgainAsItWas) {
    const unsigned char bytes[64] = {9, 8, 7, 6, 5, 4, 3, 2, 1};
    for (unsigned int code = 0; code <= 27; ++code) {
        SCOPED_TRACE(code);
        const CCompositeValue original(static_cast<T>(code), 8, bytes);
        CBinaryOutputBuffer output;
        original.SaveCompositeValue(output);
        bool failed = true;
        const CCompositeValue loaded = Loaded(output.GetData(), failed);
        EXPECT_FALSE(failed);
        EXPECT_EQ(loaded.GetType(), original.GetType());
        ASSERT_EQ(loaded.GetCount(), 8U);
        ASSERT_EQ(loaded.GetDataLength(), original.GetDataLength());
        if (original.GetDataLength() == 0) continue;
        EXPECT_EQ(std::memcmp(loaded.GetData(), original.GetData(), original.GetDataLength()), 0);
    }
}

TEST(CompositeLoad, CutAnywhereFailsTheStreamAndLeavesNothing) {
    const std::vector<unsigned char> whole = {5, 2, 0, 0, 0, 1, 2, 3, 4};
    for (std::size_t size = 0; size < whole.size(); ++size) {
        SCOPED_TRACE(size);
        bool failed = false;
        const CCompositeValue loaded = Loaded({whole.begin(), whole.begin() + static_cast<long>(size)}, failed);
        EXPECT_TRUE(failed);
        EXPECT_EQ(loaded.GetCount(), 0U);
        EXPECT_EQ(loaded.GetData(), nullptr);
    }
}

TEST(CompositeLoad, MoreThanTheStreamHoldsIsRefusedBeforeAllocation) {
    for (const std::vector<unsigned char>& bytes :
         std::vector<std::vector<unsigned char>>{{15, 0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3, 4, 5, 6, 7, 8},
                                                 {11, 0, 0, 0, 0x20, 1},  // times 8 it would be 0 in 32 bits
                                                 {4, 2, 0, 0, 0, 1}}) {
        bool failed = false;
        const CCompositeValue loaded = Loaded(bytes, failed);
        EXPECT_TRUE(failed);
        EXPECT_EQ(loaded.GetCount(), 0U);
    }
}

TEST(CompositeLoad, UnknownTypeHasNoData) {
    bool failed = true;
    const CCompositeValue loaded = Loaded({200, 0xFF, 0xFF, 0xFF, 0xFF}, failed);
    EXPECT_FALSE(failed);
    EXPECT_EQ(loaded.GetDataLength(), 0U);
    EXPECT_EQ(Printed(loaded).substr(0, 20), "Unknown[ Undefined, ");
}

TEST(CompositeFile, BecomesBytes) {
    const FileOf file(
        "a\xFF"
        "c");
    CCompositeValue composite = DInts(2);
    EXPECT_TRUE(composite.ReadBYTEArrayFromFile(file.GetPath()));
    EXPECT_EQ(composite.GetType(), T::Byte);
    ASSERT_EQ(composite.GetCount(), 3U);
    EXPECT_EQ(std::memcmp(composite.GetData(),
                          "a\xFF"
                          "c",
                          3),
              0);
}

TEST(CompositeFile, EmptyFileIsAnEmptyArray) {
    const FileOf file("");
    CCompositeValue composite = DInts(2);
    EXPECT_TRUE(composite.ReadBYTEArrayFromFile(file.GetPath()));
    EXPECT_EQ(composite.GetType(), T::Byte);
    EXPECT_EQ(composite.GetCount(), 0U);
    EXPECT_EQ(Printed(composite), "BYTE[]");
}

TEST(CompositeFile, MissingFileLeavesTypeAndCountWithoutData) {
    CCompositeValue composite = DInts(2);
    EXPECT_FALSE(composite.ReadBYTEArrayFromFile(CTNFilePath("/nonexistent/file")));
    EXPECT_EQ(composite.GetType(), T::DInt);
    EXPECT_EQ(composite.GetCount(), 2U);
    EXPECT_EQ(composite.GetData(), nullptr);
    CValue out;
    EXPECT_FALSE(composite.GetElement(0, out));
    const CCompositeValue copy(composite);
    EXPECT_EQ(copy.GetData(), nullptr);
    CBinaryOutputBuffer output;
    composite.SaveCompositeValue(output);
    EXPECT_THAT(output.GetData(), ::testing::ElementsAre(8, 0, 0, 0, 0));
}

}  // namespace
