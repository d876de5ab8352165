#include "compiler/Generator.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "compiler/GeneratorMap.h"
#include "compiler/RoutineGenerator.h"

namespace tn61131::st {

namespace {

/// Code offsets and jump distances have 31 bits.
constexpr std::uint64_t kMaxCode = INT32_MAX;

/// POUs that may be active twice at once: those that lead back to themselves.
class RecursionFinder {
 public:
    explicit RecursionFinder(const Project& project) {
        for (const Pou& pou : project.pous) {
            if (!indexes_.contains(&pou)) Visit(pou);
        }
    }
    [[nodiscard]] bool MayRecur(const Pou& pou) const { return recursive_.contains(&pou); }

 private:
    struct Step {
        const Pou* pou;
        std::size_t next;
    };
    struct Index {
        std::uint32_t number;
        std::uint32_t lowest;
        bool isOpen;
    };

    /// Tarjan's strongly connected components, without recursion.
    void Visit(const Pou& root) {
        Open(root);
        while (!path_.empty()) {
            Step& step = path_.back();
            if (step.next < step.pou->callees.size()) {
                // Opening the callee moves the steps.
                const Pou& caller = *step.pou;
                const Pou& callee = *caller.callees[step.next++];
                const auto found = indexes_.find(&callee);
                if (found == indexes_.end()) {
                    Open(callee);
                } else if (found->second.isOpen) {
                    Lower(caller, found->second.number);
                }
                if (&callee == &caller) recursive_.insert(&callee);
                continue;
            }
            const Pou& done = *step.pou;
            path_.pop_back();
            const Index index = indexes_.at(&done);
            if (!path_.empty()) Lower(*path_.back().pou, index.lowest);
            if (index.lowest == index.number) Close(done);
        }
    }
    void Open(const Pou& pou) {
        const auto number = static_cast<std::uint32_t>(indexes_.size());
        indexes_[&pou] = {number, number, true};
        open_.push_back(&pou);
        path_.push_back({&pou, 0});
    }
    void Lower(const Pou& pou, std::uint32_t number) {
        Index& index = indexes_.at(&pou);
        index.lowest = std::min(index.lowest, number);
    }
    void Close(const Pou& root) {
        const auto first = std::find(open_.rbegin(), open_.rend(), &root).base() - 1;
        const bool isCycle = open_.end() - first > 1;
        for (auto pou = first; pou != open_.end(); ++pou) {
            indexes_.at(*pou).isOpen = false;
            if (isCycle) recursive_.insert(*pou);
        }
        open_.erase(first, open_.end());
    }

    std::map<const Pou*, Index> indexes_;
    std::vector<const Pou*> open_;
    std::vector<Step> path_;
    std::set<const Pou*> recursive_;
};

class ImageBuilder final : public RoutineNumbering {
 public:
    ImageBuilder(Project& project, Declarations& declarations, ImageContent& image)
        : project_(project),
          image_(image),
          generator_(project, declarations, *this),
          recursion_(project),
          globalSize_(static_cast<std::uint32_t>(project.globalData.size())) {}

    bool Run(CSymbolMap& map) {
        image_ = {};
        for (const ProgramEntry& program : project_.programs)
            GetRoutine(GetRoutineOf(program));
        for (const Standalone& standalone : project_.standalones)
            routines_.push_back({{standalone.pou, 0, {}, &standalone}});
        // What is called joins the end of the list.
        for (std::size_t i = 0; i < routines_.size(); ++i) {
            if (!GenerateRoutine(i)) return false;
        }
        LinkCalls();
        FillTables();
        image_.globalData.data = project_.globalData;
        image_.globalData.data.resize(globalSize_);
        image_.constants.data = project_.constants;
        FillMap(map);
        return !project_.diagnostics.HasErrors();
    }

    RoutineId GetRoutine(Routine routine) override {
        const auto next = static_cast<RoutineId>(routines_.size());
        const auto [place, isNew] = ids_.try_emplace(routine, next);
        if (isNew) routines_.push_back({std::move(routine)});
        return place->second;
    }

 private:
    struct Placed {
        Routine routine;
        std::uint32_t codeOffset = 0;
        std::uint32_t codeSize = 0;
    };

    [[nodiscard]] static Routine GetRoutineOf(const ProgramEntry& program) {
        return {program.pou, program.instanceOffset - program.pou->instanceOffset, {}, nullptr};
    }

    bool GenerateRoutine(std::size_t index) {
        const Routine routine = routines_[index].routine;
        routines_[index].codeOffset = static_cast<std::uint32_t>(image_.code.size());
        if (!generator_.Generate(routine, recursion_.MayRecur(*routine.pou), globalSize_)) return false;
        Append(generator_.GetProlog());
        Append(generator_.GetBody());
        routines_[index].codeSize = static_cast<std::uint32_t>(image_.code.size()) - routines_[index].codeOffset;
        if (image_.code.size() <= kMaxCode && globalSize_ <= kMaxCode) return true;
        project_.diagnostics.Report(
            DiagnosticCode::ImageTooLarge,
            routine.pou->declaration == nullptr ? SourceRange{} : routine.pou->declaration->name.range,
            {std::to_string(kMaxCode)});
        return false;
    }

    void Append(const CodeBuffer& code) {
        const auto base = static_cast<std::uint32_t>(image_.code.size());
        image_.code.insert(image_.code.end(), code.GetBytes().begin(), code.GetBytes().end());
        for (const CodeBuffer::CallSite& site : code.GetCallSites())
            callSites_.push_back({site.at + base, site.routine});
        for (const CodeBuffer::Position& position : code.GetPositions()) {
            if (position.codeOffset < code.GetBytes().size()) {
                positions_.push_back({position.codeOffset + base, position.source});
            }
        }
    }

    void LinkCalls() {
        for (const CodeBuffer::CallSite& site : callSites_) {
            const std::uint32_t target = routines_[static_cast<std::size_t>(site.routine)].codeOffset;
            std::memcpy(image_.code.data() + site.at, &target, sizeof(target));
        }
    }

    void FillTables() {
        for (const ProgramEntry& program : project_.programs) {
            const RoutineId id = GetRoutine(GetRoutineOf(program));
            image_.programs.push_back({GetDeclaredName(project_, program.name, program.declared), OffsetOf(id), 0});
        }
        for (const Placed& placed : routines_) {
            if (placed.routine.standalone == nullptr) continue;
            const Standalone& standalone = *placed.routine.standalone;
            (standalone.isExpression ? image_.expressions : image_.codeBlocks)
                .push_back({standalone.id, placed.codeOffset});
        }
    }

    [[nodiscard]] std::uint32_t OffsetOf(RoutineId id) const {
        return routines_[static_cast<std::size_t>(id)].codeOffset;
    }

    void FillMap(CSymbolMap& map) {
        std::vector<PlacedRoutine> placed;
        placed.reserve(routines_.size());
        for (const Placed& routine : routines_)
            placed.push_back({routine.routine.pou, routine.routine.standalone, routine.routine.instanceDelta,
                              routine.codeOffset, routine.codeSize});
        FillSymbolMap(project_, placed, positions_, map);
    }

    Project& project_;
    ImageContent& image_;
    RoutineGenerator generator_;
    const RecursionFinder recursion_;
    std::uint32_t globalSize_;
    std::vector<Placed> routines_;
    std::map<Routine, RoutineId> ids_;
    std::vector<CodeBuffer::CallSite> callSites_;
    std::vector<CodeBuffer::Position> positions_;
};

}  // namespace

bool Generate(Project& project, Declarations& declarations, ImageContent& image, CSymbolMap& map) {
    map.Clear();
    return ImageBuilder(project, declarations, image).Run(map);
}

}  // namespace tn61131::st
