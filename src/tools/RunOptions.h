#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/CompileArguments.h"

namespace tn61131 {

/// What `tn61131 run` was asked for.
struct RunOptions {
    std::vector<std::string> images;  ///< and structured text: all of it together is one project
    CompileArguments compile;         ///< of the project; the tags file is `tagsFile`
    // The entry point: at most one of the three; none means the first program by name, else the lowest expression.
    std::optional<std::string> program;
    std::optional<std::uint32_t> expression;
    std::optional<std::uint32_t> codeBlock;
    std::uint32_t instructionLimit = 100000;
    std::uint64_t scans = 1;
    std::optional<std::int64_t> timestampMS;  ///< VM time of the first scan; the clock when it is not given
    std::int64_t stepMS = 100;                ///< added to the timestamp from scan to scan
    std::uint32_t resumes = 1000;             ///< how often a suspended scan is resumed before giving up
    std::vector<std::string> watch;           ///< paths of variables as the symbol map finds them
    std::string mapFile;                      ///< empty: the file beside the image, where there is one
    std::string tagsFile;                     ///< empty: no directly located variables
    std::string traceFile;                    ///< empty: no waveform
    std::string locale;                       ///< empty: the default
    std::string timeZone;                     ///< empty: UTC
    bool json = false;
    bool lastOnly = false;  ///< report the last scan only
    bool time = false;      ///< report the time spent in the machine
};

}  // namespace tn61131
