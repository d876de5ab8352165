#pragma once

#include "platform/jsonata/FunctionTable.h"

namespace tn61131::jsonata::functions {

// The functions of the library, one body each; the table tells their names and arguments.

Value String(NativeCall& call);
Value Length(NativeCall& call);
Value Substring(NativeCall& call);
Value SubstringBefore(NativeCall& call);
Value SubstringAfter(NativeCall& call);
Value Uppercase(NativeCall& call);
Value Lowercase(NativeCall& call);
Value Trim(NativeCall& call);
Value Pad(NativeCall& call);
Value Contains(NativeCall& call);
Value Split(NativeCall& call);
Value Join(NativeCall& call);
Value Match(NativeCall& call);
Value Replace(NativeCall& call);
Value Eval(NativeCall& call);
Value Base64Encode(NativeCall& call);
Value Base64Decode(NativeCall& call);
Value EncodeUrlComponent(NativeCall& call);
Value EncodeUrl(NativeCall& call);
Value DecodeUrlComponent(NativeCall& call);
Value DecodeUrl(NativeCall& call);

Value Number(NativeCall& call);
Value Abs(NativeCall& call);
Value Floor(NativeCall& call);
Value Ceil(NativeCall& call);
Value Round(NativeCall& call);
Value Power(NativeCall& call);
Value Sqrt(NativeCall& call);
Value Random(NativeCall& call);
Value FormatNumber(NativeCall& call);
Value FormatBase(NativeCall& call);
Value FormatInteger(NativeCall& call);
Value ParseInteger(NativeCall& call);

Value Sum(NativeCall& call);
Value Max(NativeCall& call);
Value Min(NativeCall& call);
Value Average(NativeCall& call);

Value Boolean(NativeCall& call);
Value Not(NativeCall& call);
Value Exists(NativeCall& call);

Value Count(NativeCall& call);
Value Append(NativeCall& call);
Value Sort(NativeCall& call);
Value Reverse(NativeCall& call);
Value Shuffle(NativeCall& call);
Value Distinct(NativeCall& call);
Value Zip(NativeCall& call);

Value Keys(NativeCall& call);
Value Lookup(NativeCall& call);
Value Spread(NativeCall& call);
Value Merge(NativeCall& call);
Value Sift(NativeCall& call);
Value Each(NativeCall& call);
Value Error(NativeCall& call);
Value Assert(NativeCall& call);
Value Type(NativeCall& call);
Value CloneValue(NativeCall& call);

Value Now(NativeCall& call);
Value Millis(NativeCall& call);
Value FromMillis(NativeCall& call);
Value ToMillis(NativeCall& call);

Value Map(NativeCall& call);
Value Filter(NativeCall& call);
Value Single(NativeCall& call);
Value Reduce(NativeCall& call);

}  // namespace tn61131::jsonata::functions
