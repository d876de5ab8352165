#pragma once

#include <iosfwd>
#include <string>

namespace tn61131 {

struct DisOptions {
    std::string image;
    std::string mapFile;  ///< empty: the map beside the image, if there is one
    bool codeOnly = false;
};

/// Lists an image as a source for `asm`. What a host must refuse is refused, with the reason in `messages`. Returns the
/// exit status.
int ListImage(const DisOptions& options, std::ostream& output, std::ostream& messages);

}  // namespace tn61131
