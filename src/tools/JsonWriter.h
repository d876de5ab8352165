#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

namespace tn61131 {

/// Appends text as a quoted JSON string (RFC 8259). Every maximal part that is not valid UTF-8 becomes U+FFFD, so that
/// the result is valid whatever the bytes are.
void AppendJsonString(std::string& out, std::string_view text);

/// Bytes as lower-case hexadecimal digits.
[[nodiscard]] std::string HexText(const unsigned char* data, std::size_t size);

/// Writes one JSON text to a stream as it comes, without white space: memory does not grow with it. The caller opens
/// and closes in order; commas come by themselves.
class JsonWriter {
 public:
    explicit JsonWriter(std::ostream& output) : output_(output) {}

    void BeginObject() { Open('{'); }
    void EndObject() { Close('}'); }
    void BeginArray() { Open('['); }
    void EndArray() { Close(']'); }
    /// Names the value that is written next.
    void Key(std::string_view name);
    void String(std::string_view text);
    void Number(std::int64_t value);
    void Number(std::uint64_t value);
    void Boolean(bool value);
    void Null();
    /// Ends the line, after the outermost value.
    void EndLine();

    void Member(std::string_view name, std::string_view text) {
        Key(name);
        String(text);
    }
    void Member(std::string_view name, std::uint64_t value) {
        Key(name);
        Number(value);
    }

 private:
    void Open(char bracket);
    void Close(char bracket);
    void Separate();

    std::ostream& output_;
    std::string scratch_;
    bool commaDue_ = false;
};

/// Writes the member "errors": log entries and errors of the tool alike, each with id, location and text.
template <typename Errors>
void WriteErrors(JsonWriter& json, const Errors& errors) {
    json.Key("errors");
    json.BeginArray();
    for (const auto& error : errors) {
        json.BeginObject();
        json.Member("id", std::uint64_t{error.id});
        json.Member("location", error.location);
        json.Member("text", error.text);
        json.EndObject();
    }
    json.EndArray();
}

}  // namespace tn61131
