#include "platform/ErrorLog.h"

#include <algorithm>
#include <array>
#include <span>

ErrorLocation::~ErrorLocation() = default;

ErrorLocationNull::~ErrorLocationNull() = default;

unsigned int ErrorLocationNull::PrintLocation(char* buffer, unsigned int size) const {
    return CopyBounded(buffer, size, {});
}

const ErrorLocationNull& ErrorLocationNull::Get() noexcept {
    static const ErrorLocationNull instance;
    return instance;
}

COutputLog::~COutputLog() = default;

void COutputLog::LogError(std::string_view line) {
    ++errorCount_;
    WriteLine(line);
}

void COutputLog::LogWarning(std::string_view line) {
    ++warningCount_;
    WriteLine(line);
}

void COutputLog::PrintData(std::string_view name, unsigned int size, const unsigned char* data) {
    constexpr std::size_t kBytesPerLine = 16;
    WriteLine(FormatText("%s: %u bytes", name, size));
    std::string line;
    const std::span<const unsigned char> bytes(data, size);
    for (std::size_t offset = 0; offset < bytes.size(); offset += kBytesPerLine) {
        line.clear();
        const FormatArg start(offset);
        AppendFormatted(line, "%08X:", {&start, 1});
        for (const unsigned char byte : bytes.subspan(offset, std::min(kBytesPerLine, bytes.size() - offset))) {
            const FormatArg value(byte);
            AppendFormatted(line, " %02X", {&value, 1});
        }
        WriteLine(line);
    }
}

COutputLogNull::~COutputLogNull() = default;

void COutputLogNull::WriteLine(std::string_view) {}

COutputLogString::~COutputLogString() = default;

void COutputLogString::WriteLine(std::string_view line) {
    text_.append(line);
    text_.push_back('\n');
}

CErrorLog::~CErrorLog() = default;

COutputLog& CErrorLog::GetOutputLog() noexcept {
    return output_ != nullptr ? *output_ : dropped_;
}

void CErrorLog::PropagateErrorAndWarningCount(const COutputLog& other) noexcept {
    errorCount_ += other.GetErrorCount();
    warningCount_ += other.GetWarningCount();
}

void CErrorLog::Clear() noexcept {
    entries_.clear();
    errorCount_ = 0;
    warningCount_ = 0;
}

void CErrorLog::Log(const ErrorLocation& location, const CTNModule& module, Severity severity, std::uint32_t id,
                    std::initializer_list<FormatArg> args) {
    ++(severity == Severity::Error ? errorCount_ : warningCount_);
    Record(location, module, severity, id, FormatArgs(args.begin(), args.size()));
}

void CErrorLog::Record(const ErrorLocation& location, const CTNModule& module, Severity severity, std::uint32_t id,
                       FormatArgs args) {
    // Set and bounded here, so that no implementation of a location can bring in what it did not write.
    std::array<char, 256> locationText{};
    const unsigned int written = location.PrintLocation(locationText.data(), locationText.size());
    const std::string_view locationView(locationText.data(), std::min<std::size_t>(written, locationText.size() - 1));
    Entry entry{&module, id, severity, {}, {}};
    entry.location = locationView.substr(0, locationView.find('\0'));
    const char* const text = module.FindText(id);
    AppendFormatted(entry.text, text == nullptr ? "Unknown message." : text, args);

    if (output_ != nullptr) {
        const std::string_view separator = entry.location.empty() ? "" : ": ";
        const std::string_view kind = severity == Severity::Error ? "error" : "warning";
        output_->WriteLine(FormatText("%s%s%s %u: %s", entry.location, separator, kind, id, entry.text));
    }
    entries_.push_back(std::move(entry));
}

CErrorLogToNull::~CErrorLogToNull() = default;

void CErrorLogToNull::Record(const ErrorLocation&, const CTNModule&, Severity, std::uint32_t, FormatArgs) {}
