#pragma once

#include <string>

/// Appends the shortest digits that read back to the same value, laid out as CTextOutput::PrintFloat() and
/// PrintDouble() document.
void AppendShortest(std::string& out, float value);
void AppendShortest(std::string& out, double value);
