#pragma once

#include <string>

#include "platform/Export.h"

// Text into and out of the character part of string buffers in the machine's memory. Counts and capacities are code
// units: bytes of a STRING, 16-bit units of a WSTRING. What does not fit is cut before a code point.

/// Encodes text as UTF-8 (UTF-16) into `dest` and returns the units stored.
TN61131_API unsigned short StoreVMString(const std::string& text, unsigned char* dest, unsigned int capacity);
TN61131_API unsigned short StoreVMString(const char* text, unsigned int length, unsigned char* dest,
                                         unsigned int capacity);
TN61131_API unsigned short StoreVMWString(const std::string& text, unsigned short* dest, unsigned int capacity);
TN61131_API unsigned short StoreVMWString(const char* text, unsigned int length, unsigned short* dest,
                                          unsigned int capacity);
/// Decodes into internal text of at most `outSize` - 1 bytes and a terminating zero; returns the bytes written.
TN61131_API unsigned int GetNullTerminatedWStringFromVMString(char* out, unsigned int outSize,
                                                              const unsigned char* data, unsigned int count);
TN61131_API unsigned int GetNullTerminatedWStringFromVMWString(char* out, unsigned int outSize,
                                                               const unsigned short* data, unsigned int count);
/// Decodes into `out`, stopping at the first U+FFFD: a damaged buffer yields its valid prefix.
TN61131_API void GetWStringFromVMString(const unsigned char* data, unsigned int count, std::string& out);
TN61131_API void GetWStringFromVMWString(const unsigned short* data, unsigned int count, std::string& out);
/// Compares bytes with units, unsigned, then lengths: 1 when `text` is greater, -1 when smaller, 0 when equal.
[[nodiscard]] TN61131_API int CompareWStringWithVMWString(const char* text, unsigned int length,
                                                          const unsigned short* data, unsigned int count);
