#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "compiler/Model.h"

namespace tn61131::st {

/// Directly located variables (IEC 61131-3, 6.5.5.3). An address that the options list is a tag of the host. Any other
/// %I, %Q or %M address lies in reserved areas at the end of GlobalData, in the order I, Q, M:
///
///     bytes that B, W, D and L addresses reach | one BOOL for each X address, one cell for each a.b.c address
///
/// Number n of width w starts at byte n * size(w) of its area, so %MB4, %MW2 and %MD1 lie on each other. A single bit
/// has no address on the machine: %IX0.1 is a byte of its own behind the area, never a bit of %IB0.
class LocatedVariables {
 public:
    /// Bytes that the addresses of one area may reach.
    static constexpr std::uint32_t kMaxAreaSize = 0x100000;

    explicit LocatedVariables(Project& project);

    /// The variable that an expression names; the same for the same address. Null after a message.
    [[nodiscard]] Variable* Resolve(const ast::LocatedExpr& located);
    /// Places a variable that was declared with AT. Its type must be complete.
    void Place(Variable& variable, const ast::LocatedExpr& located);
    /// Whether the address leaves its number open: %I*, %QX*.
    [[nodiscard]] static bool IsOpen(const ast::LocatedExpr& located) noexcept;
    /// Appends the areas to GlobalData and gives their variables a place. False after a message.
    [[nodiscard]] bool Layout();
    /// Those that have a place in an area.
    [[nodiscard]] const std::vector<Variable*>& GetVariables() const noexcept { return placed_; }

 private:
    struct Address {
        std::size_t area = 0;  ///< I, Q, M
        char width = 'X';
        std::vector<std::uint32_t> parts;
    };
    struct Use {
        Variable* variable;
        SourceRange range;
        std::uint32_t offset;  ///< bytes from the start of the area, or of the cell
    };
    struct Cell {
        std::uint32_t size = 0;
        std::vector<Use> uses;
    };
    struct Area {
        std::uint32_t size = 0;
        std::vector<Use> uses;
        std::map<std::pair<char, std::vector<std::uint32_t>>, Cell> cells;
    };

    [[nodiscard]] const TagSymbol* FindTag(const ast::LocatedExpr& located) const;
    [[nodiscard]] std::uint16_t GetStringLength(const TagSymbol* tag) const;
    [[nodiscard]] bool Parse(const ast::LocatedExpr& located, Address& out) const;
    void PlaceOnTag(Variable& variable, const ast::LocatedExpr& located, const TagSymbol& tag);
    void PlaceInArea(Variable& variable, const ast::LocatedExpr& located, const Address& address);
    void WarnOfOverlap(const Area& area) const;

    Project& project_;
    std::unordered_map<std::string, const TagSymbol*> tags_;    ///< by address as written
    std::unordered_map<std::string, const TagSymbol*> folded_;  ///< by address without regard to case
    std::unordered_map<std::string, Variable*> byAddress_;
    std::array<Area, 3> areas_;
    std::vector<Variable*> placed_;
};

}  // namespace tn61131::st
