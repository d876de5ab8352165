#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "assembler/SymbolType.h"

// What a symbol map knows of the project that an image was made from, besides its variables.

/// Where a variable of a program organisation unit is while the unit runs.
struct SymbolLocal {
    enum class Place : std::uint8_t {
        Global,           ///< `offset` bytes into the global data
        Constant,         ///< into the global constants
        Instance,         ///< into the unit's instance: local data of the frame
        InstancePointer,  ///< there lies a pointer to it
        Temp,             ///< into the temporary data of the frame
        Slot,             ///< value stack entry `offset` of the frame
        SlotPointer,      ///< that entry is a pointer to it
        Tag,              ///< `offset` bytes into the tag `tagId`
    };
    std::string name{};
    Place place = Place::Global;
    std::uint32_t offset = 0;
    std::uint32_t tagId = 0;  ///< place Tag only
    SymbolType type{};
};

/// A program organisation unit whose code is in the image; an instance of it where it has several.
struct SymbolPou {
    enum class Kind : std::uint8_t { Program, Function, FunctionBlock, Method, Action };
    Kind kind = Kind::Program;
    std::string name{};            ///< with that of its block or program in front: "Motor.Start"
    std::uint32_t codeOffset = 0;  ///< first byte of its code
    std::uint32_t codeSize = 0;
    std::uint32_t file = 0;  ///< index into the files of the map
    std::uint32_t line = 0;  ///< where it is declared, from 1; 0 is not known
    std::vector<SymbolLocal> variables{};
};

struct SymbolTask {
    std::string name{};
    std::optional<std::int64_t> intervalMs{};
    std::optional<std::int64_t> priority{};
    std::string single{};  ///< the variable whose rising edge starts it; empty without
    std::vector<std::string> programs{};
};

/// Bytes of the global data that a host keeps.
struct SymbolRetained {
    std::string name{};  ///< of the variable, with its scope in front
    std::uint32_t offset = 0;
    std::uint32_t size = 0;
    bool isPersistent = false;  ///< also over a download; else over a restart only
};

/// A directly located variable that the project knows.
struct SymbolTag {
    std::string address{};  ///< as the source names it
    std::uint32_t tagId = 0;
    std::uint32_t offset = 0;  ///< bytes within the tag
    SymbolType type{};
    bool isReadOnly = false;
};
