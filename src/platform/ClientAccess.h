#pragma once

#include <string>

#include "platform/DataFormat.h"
#include "platform/Export.h"

/// On whose behalf memory is written and text is formatted: the client's name and its format settings. The host owns it
/// and keeps it alive as long as the contexts it is given to.
class TN61131_API CClientAccessContext {
 public:
    CClientAccessContext() = default;
    explicit CClientAccessContext(std::string name, CDataFormatSettings settings = {})
        : name_(std::move(name)), settings_(std::move(settings)) {}
    [[nodiscard]] const std::string& GetName() const noexcept { return name_; }
    [[nodiscard]] const CDataFormatSettings* GetDataFormatSettings() const noexcept { return &settings_; }
    [[nodiscard]] CDataFormatSettings& GetDataFormatSettings() noexcept { return settings_; }

 private:
    std::string name_;
    CDataFormatSettings settings_;
};
