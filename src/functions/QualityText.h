#pragma once

#include "platform/Export.h"

/// The text of a 16-bit data quality code (OPC): "192 (Good)", or only "Good".
class TN61131_API CStringFromQuality {
 public:
    CStringFromQuality(short quality, bool nameOnly);
    [[nodiscard]] const char* Text() const noexcept { return text_; }

 private:
    short quality_;
    bool nameOnly_;
    char text_[80];
};
