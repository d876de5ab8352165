#pragma once

/// Edge detection over three flags (IEC 61131-3, R_TRIG and F_TRIG): output, input (CLK) and memory. The falling edge
/// remembers the inverted input, so that zeroed memory and a first FALSE give an edge.
struct BooleanEdge {
    bool output = false;
    bool input = false;
    bool memory = false;

    void ProcessRisingEdge() noexcept {
        output = input && !memory;
        memory = input;
    }
    void ProcessFallingEdge() noexcept {
        output = !input && !memory;
        memory = !input;
    }
};
