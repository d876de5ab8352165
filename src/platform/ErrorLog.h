#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"
#include "platform/FormatText.h"
#include "platform/TNModule.h"

/// Where an error happened. Implementations write a short text for a person.
class TN61131_API ErrorLocation {
 public:
    ErrorLocation() = default;
    ErrorLocation(const ErrorLocation&) = default;
    ErrorLocation& operator=(const ErrorLocation&) = default;
    virtual ~ErrorLocation();
    /// Writes the location into `buffer`, bounded by `size` and terminated. Returns the bytes written; 0 for none.
    virtual unsigned int PrintLocation(char* buffer, unsigned int size) const = 0;
};

/// No location: prints nothing. ErrorLocationNull::Get() is a shared instance.
class TN61131_API ErrorLocationNull final : public ErrorLocation {
 public:
    ~ErrorLocationNull() override;
    unsigned int PrintLocation(char* buffer, unsigned int size) const override;
    [[nodiscard]] static const ErrorLocationNull& Get() noexcept;
};

/// A log of text lines, the output end of error logs and of diagnostic dumps. Counts the errors and warnings that a
/// parser reports straight into it.
class TN61131_API COutputLog {
 public:
    COutputLog() = default;
    COutputLog(const COutputLog&) = delete;
    COutputLog& operator=(const COutputLog&) = delete;
    virtual ~COutputLog();

    virtual void WriteLine(std::string_view line) = 0;
    /// Writes the line and counts an error, respectively a warning.
    void LogError(std::string_view line);
    void LogWarning(std::string_view line);
    [[nodiscard]] unsigned int GetErrorCount() const noexcept { return errorCount_; }
    [[nodiscard]] unsigned int GetWarningCount() const noexcept { return warningCount_; }
    /// A hexadecimal dump: a line with the name and the size, then lines of 16 bytes with their offset.
    void PrintData(std::string_view name, unsigned int size, const unsigned char* data);

 private:
    unsigned int errorCount_ = 0;
    unsigned int warningCount_ = 0;
};

/// Drops every line (but still counts).
class TN61131_API COutputLogNull final : public COutputLog {
 public:
    ~COutputLogNull() override;
    void WriteLine(std::string_view line) override;
};

/// Keeps its lines for the owner to read.
class TN61131_API COutputLogString final : public COutputLog {
 public:
    ~COutputLogString() override;
    void WriteLine(std::string_view line) override;
    /// All lines, each ended by a line feed.
    [[nodiscard]] const std::string& GetText() const noexcept { return text_; }

 private:
    std::string text_;
};

/// The errors and warnings of one operation or one run. Belongs to its caller and is used by one thread at a time.
/// Keeps its entries for the host to read and writes each to the output log, if there is one, as
/// `LOCATION: error ID: TEXT` (`warning` for warnings; without `LOCATION: ` where the location prints nothing).
class TN61131_API CErrorLog {
 public:
    enum class Severity : std::uint8_t { Error, Warning };
    struct Entry {
        const CTNModule* module;
        std::uint32_t id;
        Severity severity;
        std::string location;  ///< empty where none is known
        std::string text;      ///< the message with its placeholders filled
    };

    /// `output` may be null; it is not owned and must outlive the log.
    explicit CErrorLog(COutputLog* output = nullptr) noexcept : output_(output) {}
    CErrorLog(const CErrorLog&) = delete;
    CErrorLog& operator=(const CErrorLog&) = delete;
    virtual ~CErrorLog();

    template <typename... Args>
    void LogError(const CTNModule& module, std::uint32_t id, const Args&... args) {
        Log(ErrorLocationNull::Get(), module, Severity::Error, id, {FormatArg(args)...});
    }
    template <typename... Args>
    void LogError(const ErrorLocation& location, const CTNModule& module, std::uint32_t id, const Args&... args) {
        Log(location, module, Severity::Error, id, {FormatArg(args)...});
    }
    template <typename... Args>
    void LogWarning(const ErrorLocation& location, const CTNModule& module, std::uint32_t id, const Args&... args) {
        Log(location, module, Severity::Warning, id, {FormatArg(args)...});
    }

    [[nodiscard]] unsigned int GetErrorCount() const noexcept { return errorCount_; }
    [[nodiscard]] unsigned int GetWarningCount() const noexcept { return warningCount_; }
    [[nodiscard]] const std::vector<Entry>& GetEntries() const noexcept { return entries_; }
    /// The output given at construction; a log that drops everything when there was none.
    [[nodiscard]] COutputLog& GetOutputLog() noexcept;
    /// Adds the counts of a log that a parser of its own reported into; no entry is made.
    void PropagateErrorAndWarningCount(const COutputLog& other) noexcept;
    /// Forgets entries and counts.
    void Clear() noexcept;

 protected:
    /// Handles one message; the base keeps the entry and writes it to the output. Overrides may drop it.
    virtual void Record(const ErrorLocation& location, const CTNModule& module, Severity severity, std::uint32_t id,
                        FormatArgs args);

 private:
    void Log(const ErrorLocation& location, const CTNModule& module, Severity severity, std::uint32_t id,
             std::initializer_list<FormatArg> args);

    COutputLog* output_;
    COutputLogNull dropped_;  // of its own, because even a log that drops its lines counts
    unsigned int errorCount_ = 0;
    unsigned int warningCount_ = 0;
    std::vector<Entry> entries_;
};

/// Counts and drops: for callers that only want success or failure. Formats nothing.
class TN61131_API CErrorLogToNull final : public CErrorLog {
 public:
    ~CErrorLogToNull() override;

 protected:
    void Record(const ErrorLocation& location, const CTNModule& module, Severity severity, std::uint32_t id,
                FormatArgs args) override;
};
