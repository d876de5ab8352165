#pragma once

#include <string>

/// Appends the shortest digits that read back to the same value, laid out as CTextOutput::PrintFloat() and
/// PrintDouble() document.
void AppendShortest(std::string& out, float value);
void AppendShortest(std::string& out, double value);

/// Appends a finite number as ECMAScript prints it: the same shortest digits, in fixed notation from 10^-6 to below
/// 10^21, else as "1.5e-7"; a sign for the negative zero too.
void AppendECMAScriptNumber(std::string& out, double value);
