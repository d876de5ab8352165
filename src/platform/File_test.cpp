#include "platform/File.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class FileTest : public ::testing::Test {
 public:
    ~FileTest() override { (void)std::remove(path_.c_str()); }

 protected:
    [[nodiscard]] CTNFilePath Written(const std::string& content) const {
        std::ofstream(path_, std::ios::binary) << content;
        return CTNFilePath(path_);
    }

    const std::string path_ = ::testing::TempDir() + "file_test_" + std::to_string(::getpid()) + "_" +
                              ::testing::UnitTest::GetInstance()->current_test_info()->name();
};

TEST_F(FileTest, ReadsInPiecesUpToTheEnd) {
    TNFileUnix file;
    ASSERT_TRUE(file.OpenFileForRead(Written(std::string("ab\0cd", 5))));
    EXPECT_EQ(file.GetFileSize(), 5u);
    std::array<char, 5> data{};
    EXPECT_TRUE(file.ReadBytes(data.data(), 2));
    EXPECT_TRUE(file.ReadBytes(data.data() + 2, 3));
    EXPECT_EQ(std::string(data.data(), data.size()), std::string("ab\0cd", 5));
    EXPECT_TRUE(file.ReadBytes(data.data(), 0));
    EXPECT_FALSE(file.ReadBytes(data.data(), 1));
}

TEST_F(FileTest, MoreThanIsLeftFails) {
    TNFileUnix file;
    ASSERT_TRUE(file.OpenFileForRead(Written("abc")));
    std::array<char, 4> data{};
    EXPECT_FALSE(file.ReadBytes(data.data(), 4));
}

TEST_F(FileTest, EmptyFileOpens) {
    TNFileUnix file;
    ASSERT_TRUE(file.OpenFileForRead(Written("")));
    EXPECT_EQ(file.GetFileSize(), 0u);
}

TEST_F(FileTest, WhatIsNoPlainFileIsRefused) {
    TNFileUnix file;
    EXPECT_FALSE(file.OpenFileForRead(CTNFilePath(path_))) << "missing";
    EXPECT_FALSE(file.OpenFileForRead(CTNFilePath(""))) << "empty path";
    EXPECT_FALSE(file.OpenFileForRead(CTNFilePath(::testing::TempDir()))) << "a directory";
    EXPECT_FALSE(file.OpenFileForRead(CTNFilePath("/dev/null"))) << "a device";
    EXPECT_FALSE(file.OpenFileForRead(CTNFilePath(Written("x").GetText() + std::string("\0y", 2)))) << "embedded zero";
}

TEST_F(FileTest, PipeIsRefusedWithoutWaiting) {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    TNFileUnix file;
    EXPECT_FALSE(file.OpenFileForRead(CTNFilePath(path_)));
}

TEST_F(FileTest, SizeLimitIsFourGigabytes) {
    const CTNFilePath path = Written("");
    TNFileUnix file;
    ASSERT_EQ(::truncate(path_.c_str(), 0xFFFFFFFF), 0);
    EXPECT_TRUE(file.OpenFileForRead(path));
    EXPECT_EQ(file.GetFileSize(), 0xFFFFFFFFu);
    ASSERT_EQ(::truncate(path_.c_str(), 0x100000000), 0);
    EXPECT_FALSE(file.OpenFileForRead(path));
    EXPECT_EQ(file.GetFileSize(), 0u);
}

TEST_F(FileTest, NothingIsReadWithoutAFile) {
    TNFileUnix file;
    char byte = 'x';
    EXPECT_FALSE(file.ReadBytes(&byte, 1));
    ASSERT_TRUE(file.OpenFileForRead(Written("abc")));
    EXPECT_FALSE(file.OpenFileForRead(CTNFilePath(path_ + ".missing")));
    EXPECT_FALSE(file.ReadBytes(&byte, 1)) << "a failed opening closes the file before";
    EXPECT_EQ(byte, 'x');
}

TEST_F(FileTest, OpeningAgainStartsAgain) {
    TNFileUnix file;
    const CTNFilePath path = Written("abc");
    char byte = 0;
    ASSERT_TRUE(file.OpenFileForRead(path));
    ASSERT_TRUE(file.ReadBytes(&byte, 1));
    ASSERT_TRUE(file.OpenFileForRead(path));
    ASSERT_TRUE(file.ReadBytes(&byte, 1));
    EXPECT_EQ(byte, 'a');
}

}  // namespace
