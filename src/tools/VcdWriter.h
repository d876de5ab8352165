#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "value/ElementaryType.h"

class CValue;

namespace tn61131 {

/// Writes a value change dump (IEEE 1364, clause 18) that waveform viewers open: one time unit is one millisecond, time
/// 0 the first sample. Each sample holds what has changed since the one before.
///
/// A BOOL is a wire of one bit, integers, bit strings and characters are vectors of their width in two's complement,
/// reals and TIME (in milliseconds) are real numbers; every other type is a string, which is an extension that GTKWave
/// introduced. Dots in a name nest scopes.
class VcdWriter {
 public:
    explicit VcdWriter(std::ostream& output) : output_(output) {}

    /// Declares a variable; all before the first sample.
    void AddVariable(const std::string& name, ElementaryType type);
    /// Writes the header. Ends the declarations.
    void WriteHeader();
    /// Writes the changes at a time in milliseconds; one value for each variable, in the order of declaration. An
    /// undefined value, or a number of another type than declared, is unknown (x, NaN, an empty string). Time does not
    /// go back: a sample earlier than the one before is written at that one's time.
    void Sample(long long timestampMS, const std::vector<CValue>& values);

 private:
    struct Variable {
        std::string name;  ///< with dots
        ElementaryType type;
        std::string code;    ///< identifier in the dump
        std::string change;  ///< the last change that was written
    };

    void WriteDeclarations();
    void WriteTime(long long timestampMS);

    std::ostream& output_;
    std::vector<Variable> variables_;
    bool sampled_ = false;
    long long firstMS_ = 0;
    unsigned long long time_ = 0;
};

}  // namespace tn61131
