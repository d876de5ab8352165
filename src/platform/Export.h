#pragma once

/// Marks what the shared library exports; everything else is hidden.
#define TN61131_API __attribute__((visibility("default")))
