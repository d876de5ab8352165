#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/Export.h"

/// A stream of bytes to write to. Integers are fixed-width little-endian, floating-point numbers IEEE 754
/// little-endian, a bool one byte (0 or 1), a string its byte length as a 7-bit encoded integer followed by its bytes.
class TN61131_API CBinaryOutput {
 public:
    CBinaryOutput() = default;
    CBinaryOutput(const CBinaryOutput&) = delete;
    CBinaryOutput& operator=(const CBinaryOutput&) = delete;
    virtual ~CBinaryOutput();

    virtual void WriteBytes(const void* data, std::size_t size) = 0;

    CBinaryOutput& operator<<(bool value);
    CBinaryOutput& operator<<(signed char value);
    CBinaryOutput& operator<<(unsigned char value);
    CBinaryOutput& operator<<(short value);
    CBinaryOutput& operator<<(unsigned short value);
    CBinaryOutput& operator<<(int value);
    CBinaryOutput& operator<<(unsigned int value);
    CBinaryOutput& operator<<(long long value);
    CBinaryOutput& operator<<(unsigned long long value);
    CBinaryOutput& operator<<(float value);
    CBinaryOutput& operator<<(double value);
    CBinaryOutput& operator<<(const std::string& text);

    /// Seven bits to a byte, least significant first; the high bit says that more follows. 1 to 5 bytes.
    void Write7BitEncodedInt(std::uint32_t value);
    /// The original UTF-8 byte form of a number below 2^31, 1 to 6 bytes. The top bit of `value` is dropped.
    void WriteUTFCharacter(std::uint32_t value);
};

/// An output that collects its bytes in memory.
class TN61131_API CBinaryOutputBuffer final : public CBinaryOutput {
 public:
    ~CBinaryOutputBuffer() override;
    void WriteBytes(const void* data, std::size_t size) override;
    [[nodiscard]] const std::vector<unsigned char>& GetData() const noexcept { return data_; }

 private:
    std::vector<unsigned char> data_;
};

/// A stream of bytes to read from, in the encodings of CBinaryOutput. A short read delivers zero bytes for what is
/// missing and puts the stream into the failed state for good; nothing throws. GetBytesLeft() lets a reader refuse a
/// length or a count before it allocates or loops.
class TN61131_API CBinaryInput {
 public:
    CBinaryInput() = default;
    CBinaryInput(const CBinaryInput&) = delete;
    CBinaryInput& operator=(const CBinaryInput&) = delete;
    virtual ~CBinaryInput();

    /// Bytes not yet read.
    [[nodiscard]] virtual std::size_t GetBytesLeft() const = 0;
    /// True once anything was read that was not there, or an encoding was malformed.
    [[nodiscard]] bool HasFailed() const noexcept { return failed_; }
    void SetFailed() noexcept { failed_ = true; }

    /// Reads exactly `size` bytes; false (failed state, missing bytes zero) when fewer are left.
    bool TryRead(void* data, std::size_t size);
    /// The same without a result.
    void ReadBytes(void* data, std::size_t size) { (void)TryRead(data, size); }

    CBinaryInput& operator>>(bool& value);
    CBinaryInput& operator>>(signed char& value);
    CBinaryInput& operator>>(unsigned char& value);
    CBinaryInput& operator>>(short& value);
    CBinaryInput& operator>>(unsigned short& value);
    CBinaryInput& operator>>(int& value);
    CBinaryInput& operator>>(unsigned int& value);
    CBinaryInput& operator>>(long long& value);
    CBinaryInput& operator>>(unsigned long long& value);
    CBinaryInput& operator>>(float& value);
    CBinaryInput& operator>>(double& value);
    /// A length beyond what is left takes what is there and fails the stream; nothing is allocated for the rest.
    CBinaryInput& operator>>(std::string& text);

    /// More than 5 bytes, or bits beyond 32, fail the stream; the result is then 0.
    [[nodiscard]] std::uint32_t Read7BitEncodedInt();
    /// A malformed sequence fails the stream; the result is then 0.
    [[nodiscard]] std::uint32_t ReadUTF8Character();

 protected:
    /// Reads up to `size` bytes and returns how many were read.
    virtual std::size_t ReadSome(void* data, std::size_t size) = 0;

 private:
    bool failed_ = false;
};

/// An input over bytes that the caller owns and keeps alive.
class TN61131_API CBinaryInputMemory final : public CBinaryInput {
 public:
    explicit CBinaryInputMemory(std::span<const unsigned char> data) noexcept : data_(data) {}
    ~CBinaryInputMemory() override;
    [[nodiscard]] std::size_t GetBytesLeft() const override { return data_.size() - position_; }
    [[nodiscard]] std::size_t GetPosition() const noexcept { return position_; }

 protected:
    std::size_t ReadSome(void* data, std::size_t size) override;

 private:
    std::span<const unsigned char> data_;
    std::size_t position_ = 0;
};
