#include "assembler/Assembler.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "assembler/AsmCode.h"
#include "assembler/AsmData.h"
#include "platform/FormatText.h"
#include "value/ValueType.h"

namespace {

constexpr std::int64_t kHighest16 = std::numeric_limits<std::uint16_t>::max();
constexpr std::int64_t kHighest32 = std::numeric_limits<std::uint32_t>::max();

enum class Section : std::uint8_t { None, Global, Constant, Tag, Struct, Code };

/// Code may name data that stands behind it, so it is read when all data is known.
enum class Pass : std::uint8_t { Declarations, Code };

/// One run over one text.
class CAssembly {
 public:
    CAssembly(const AssemblerLimits& limits, std::string_view text, std::vector<SourceDiagnostic>& diagnostics)
        : lines_(SplitSourceLines(text, diagnostics)),
          cursor_(lines_, diagnostics),
          globals_(LocationKind::Global, limits.maxDataSize),
          constants_(LocationKind::GlobalConstant, limits.maxDataSize),
          code_(cursor_, structs_, symbols_, limits.maxCodeSize) {}

    void Run(std::string_view fileName, AssembledImage& out) {
        ReadLines(Pass::Declarations);
        const AsmNames names{.globals = &symbols_};
        globals_.ResolvePointers(cursor_, names);
        constants_.ResolvePointers(cursor_, names);
        ReadLines(Pass::Code);
        code_.ResolveLabels();
        ResolveEntries();
        CheckVersion();
        if (cursor_.GetDiagnosticCount() == 0) TakeResult(fileName, out);
    }

 private:
    using Handler = bool (CAssembly::*)();
    struct Directive {
        std::string_view name;
        Handler handler;
        Section section = Section::None;  ///< the one that it begins
    };
    static const std::array<Directive, 11> kDirectives;

    /// An entry of a table whose code offset may be a label.
    struct Entry {
        SourcePlace place;
        std::string name{};
        std::uint32_t id = 0;
        std::uint32_t secondWord = 0;
        CAsmCode::Target target{};
    };

    void ReadLines(Pass pass) {
        cursor_.MoveTo({});
        section_ = Section::None;
        while (cursor_.HasLine()) {
            if (!cursor_.AtLineEnd()) (void)ReadLine(pass);  // its errors are reported; the next line may be good
            cursor_.NextLine();
        }
        if (pass == Pass::Declarations) FinishStruct();
    }

    bool ReadLine(Pass pass) {
        for (const Directive& directive : kDirectives) {
            if (TakeDirective(directive.name)) return pass == Pass::Code ? SkipDirective(directive) : Begin(directive);
        }
        if (section_ == Section::Code) return pass != Pass::Code || code_.ReadLine();
        return pass == Pass::Code || ReadDataLine();
    }

    /// A section lasts until the next one; table entries may stand within.
    bool Begin(const Directive& directive) {
        if (directive.section != Section::None) {
            FinishStruct();
            section_ = directive.section;
        }
        return (this->*directive.handler)();
    }

    bool SkipDirective(const Directive& directive) {
        if (directive.section != Section::None) section_ = directive.section;
        return true;
    }

    bool TakeDirective(std::string_view name) {
        CSourceCursor ahead = cursor_;
        if (!ahead.Take(".") || !ahead.TakeWord(name.substr(1))) return false;
        cursor_.MoveTo(ahead.Here());
        return true;
    }

    bool ReadDataLine() {
        switch (section_) {
            case Section::Global: return ReadBlockLine(globals_, content_.globalData);
            case Section::Constant: return ReadBlockLine(constants_, content_.constants);
            case Section::Tag: return ReadTagLine();
            case Section::Struct: return ReadMemberLine();
            default:
                return cursor_.Fail("a directive expected: .global, .constant, .tag, .struct, .code or a table entry");
        }
    }

    bool ReadBlockLine(CAsmData& data, ImageContent::Block& block) {
        if (!TakeDirective(".guard")) return data.ReadLine(cursor_, structs_, symbols_);
        const SourcePlace place = cursor_.Here();
        std::vector<unsigned char> bytes;
        if (!ReadHexBytes(cursor_, bytes)) return false;
        if (bytes.size() != block.guard.size()) return cursor_.Fail(place, "the guard has four bytes");
        std::copy(bytes.begin(), bytes.end(), block.guard.begin());
        return true;
    }

    bool ReadTagLine() {
        AsmDeclaration tag;
        if (!ReadDeclaration(cursor_, structs_, AsmPlaceKind::Tag, tag)) return false;
        if (!tag.located) return cursor_.Fail(tag.start, "a tag needs its id: name AT id : type");
        if (!symbols_.AddUniqueVariable({tag.scope, tag.name, LocationKind::Tag, tag.offset, tag.tagId, tag.type}))
            return cursor_.Fail(tag.start, FormatText("'%s' is declared already", tag.name));
        return cursor_.ExpectLineEnd();
    }

    // --- structures ---

    bool BeginStruct() {
        structPlace_ = cursor_.Here();
        struct_ = std::make_shared<SymbolStruct>();
        if (!cursor_.ReadIdentifier("the name of the structure", struct_->name)) return false;
        const bool reserved = IsSameName(struct_->name, "ARRAY") || IsSameName(struct_->name, "BYTES") ||
                              CValueType::FindType(struct_->name) != ElementaryType::Undefined;
        if (reserved) return cursor_.Fail(structPlace_, FormatText("'%s' is a type already", struct_->name));
        if (!cursor_.AtLineEnd() && !cursor_.ReadUnsigned("a size in bytes", kHighest32, struct_->size)) return false;
        return cursor_.ExpectLineEnd();
    }

    bool ReadMemberLine() {
        hasMemberLines_ = true;
        AsmDeclaration member;
        if (!ReadDeclaration(cursor_, structs_, AsmPlaceKind::Offset, member)) return false;
        if (!member.scope.empty()) return cursor_.Fail(member.start, "a member has no scope");
        if (struct_->FindMember(member.name) != nullptr)
            return cursor_.Fail(member.start, FormatText("'%s' is declared already", member.name));
        if (!member.located) member.offset = memberEnd_;
        const std::uint64_t end = member.offset + member.type.GetSize();
        if (end > kHighest32) return cursor_.Fail(member.start, "the structure is too large");
        struct_->depth = std::max(struct_->depth, member.type.GetDepth() + 1);
        if (struct_->depth > SymbolType::kMaxDepth) return cursor_.Fail(member.start, "the type is nested too deeply");
        memberEnd_ = static_cast<std::uint32_t>(end);
        struct_->size = std::max(struct_->size, memberEnd_);
        struct_->members.push_back({member.name, member.offset, member.type});
        return cursor_.ExpectLineEnd();
    }

    /// A structure ends where something else begins.
    void FinishStruct() {
        const auto structure = std::exchange(struct_, nullptr);
        const bool isEmpty = !std::exchange(hasMemberLines_, false);
        memberEnd_ = 0;
        if (structure == nullptr || structure->name.empty()) return;
        if (isEmpty) {
            cursor_.Fail(structPlace_, "the structure has no members");
        } else if (!structs_.Add(structure)) {
            cursor_.Fail(structPlace_, FormatText("'%s' is a type already", structure->name));
        }
    }

    // --- sections ---

    bool BeginGlobal() { return BeginBlock(globals_); }
    bool BeginConstant() {
        constantPlace_ = cursor_.Here();
        return BeginBlock(constants_);
    }
    bool BeginBlock(CAsmData& data) {
        std::uint32_t size = 0;
        if (!cursor_.AtLineEnd() && !cursor_.ReadUnsigned("a size in bytes", kHighest32, size)) return false;
        return data.Reserve(cursor_, size) && cursor_.ExpectLineEnd();
    }
    bool BeginNames() { return cursor_.ExpectLineEnd(); }

    // --- header and tables ---

    bool ReadVersion() {
        std::int64_t version = 0;
        if (!cursor_.ReadInteger("the version", 1, CVirtualMachine::kNewestVersion, version)) return false;
        content_.version = static_cast<std::uint16_t>(version);
        return cursor_.ExpectLineEnd();
    }

    /// `.build 'product' 1.2.3.4 ticks 'source revision'`, the last two optional.
    bool ReadBuild() {
        CBuildIdentity& build = content_.build.emplace();
        if (!ReadQuoted(cursor_, "the name of the product", build.product)) return false;
        for (std::uint16_t* number : {&build.major, &build.minor, &build.build, &build.revision}) {
            if (number != &build.major && !cursor_.Expect(".")) return false;
            if (!cursor_.ReadUnsigned("a version number", kHighest16, *number)) return false;
        }
        if (cursor_.AtLineEnd()) return true;
        if (!cursor_.ReadInteger("the build time", std::numeric_limits<std::int64_t>::min(),
                                 std::numeric_limits<std::int64_t>::max(), build.buildTime))
            return false;
        if (cursor_.AtLineEnd()) return true;
        return ReadQuoted(cursor_, "the source revision", build.sourceRevision) && cursor_.ExpectLineEnd();
    }

    bool ReadObsolete() {
        obsoletePlace_ = cursor_.Here();
        std::int64_t word = 0;
        if (!cursor_.ReadInteger("the word", INT32_MIN, INT32_MAX, word)) return false;
        content_.obsoleteWord = static_cast<std::int32_t>(word);
        return cursor_.ExpectLineEnd();
    }

    bool ReadProgram() {
        Entry entry{.place = cursor_.Here()};
        const bool quoted = cursor_.Peek() == '\'';
        if (!(quoted ? ReadQuoted(cursor_, "the name", entry.name)
                     : cursor_.ReadIdentifier("the name of the program", entry.name)))
            return false;
        if (!code_.ReadTarget(entry.target)) return false;
        if (!cursor_.AtLineEnd() && !cursor_.ReadUnsigned("the second word", kHighest32, entry.secondWord))
            return false;
        programs_.push_back(std::move(entry));
        return cursor_.ExpectLineEnd();
    }

    bool ReadExpression() { return ReadIdEntry(expressions_); }
    bool ReadCodeBlock() { return ReadIdEntry(codeBlocks_); }
    bool ReadIdEntry(std::vector<Entry>& entries) {
        Entry entry{.place = cursor_.Here()};
        if (!cursor_.ReadUnsigned("an id", kHighest32, entry.id) || !code_.ReadTarget(entry.target)) return false;
        entries.push_back(std::move(entry));
        return cursor_.ExpectLineEnd();
    }

    void ResolveEntries() {
        for (std::vector<Entry>* table : {&programs_, &expressions_, &codeBlocks_}) {
            for (Entry& entry : *table)
                (void)code_.Resolve(entry.target);  // reports by itself
        }
    }

    /// What the version of the image cannot hold.
    void CheckVersion() {
        if (!content_.HasConstants() && !constants_.GetBytes().empty())
            cursor_.Fail(constantPlace_, "constants need version 2");
        if (!content_.HasObsoleteWord() && content_.obsoleteWord != 0)
            cursor_.Fail(obsoletePlace_, "version 5 has no obsolete word");
        if (!content_.HasCodeBlocks() && !codeBlocks_.empty())
            cursor_.Fail(codeBlocks_.front().place, "code blocks need version 4");
        for (std::size_t i = 0; i < expressions_.size() && !content_.HasExpressionIds(); ++i) {
            if (expressions_[i].id != i)
                cursor_.Fail(expressions_[i].place, FormatText("before version 3 this expression has the id %u", i));
        }
    }

    // --- result ---

    void TakeResult(std::string_view fileName, AssembledImage& out) {
        content_.globalData.data = std::move(globals_.GetBytes());
        content_.constants.data = std::move(constants_.GetBytes());
        AddSymbols(fileName);
        content_.code = std::move(code_.GetBytes());
        for (Entry& entry : programs_)
            content_.programs.push_back({std::move(entry.name), entry.target.offset, entry.secondWord});
        for (const Entry& entry : expressions_)
            content_.expressions.push_back({entry.id, entry.target.offset});
        for (const Entry& entry : codeBlocks_)
            content_.codeBlocks.push_back({entry.id, entry.target.offset});
        out.bytes = CImageWriter::Write(content_);
        out.content = std::move(content_);
        out.symbols = std::move(symbols_);
    }

    void AddSymbols(std::string_view fileName) {
        using Kind = SymbolLabel::Kind;
        for (const Entry& entry : programs_)
            symbols_.AddLabel({Kind::Program, entry.name, entry.target.offset});
        for (const Entry& entry : expressions_)
            symbols_.AddLabel({Kind::Expression, std::to_string(entry.id), entry.target.offset});
        for (const Entry& entry : codeBlocks_)
            symbols_.AddLabel({Kind::CodeBlock, std::to_string(entry.id), entry.target.offset});
        for (const CAsmCode::Label& label : code_.GetLabels())
            symbols_.AddLabel({label.isFunction ? Kind::Function : Kind::Label, label.name, label.offset});
        const std::uint32_t file = symbols_.AddFile(fileName);
        for (const CAsmCode::Position& position : code_.GetPositions()) {
            const std::string_view line = lines_[position.place.line];
            symbols_.AddPosition({position.codeOffset, file, static_cast<std::uint32_t>(position.place.line + 1),
                                  CountCharacters(line, position.place.at) + 1});
        }
    }

    std::vector<std::string> lines_;
    CSourceCursor cursor_;
    CStructTable structs_;
    CSymbolMap symbols_;
    ImageContent content_;
    CAsmData globals_;
    CAsmData constants_;
    CAsmCode code_;
    Section section_ = Section::None;
    std::shared_ptr<SymbolStruct> struct_;  ///< the one that is being declared
    std::uint32_t memberEnd_ = 0;
    bool hasMemberLines_ = false;
    SourcePlace structPlace_;
    SourcePlace constantPlace_;
    SourcePlace obsoletePlace_;
    std::vector<Entry> programs_;
    std::vector<Entry> expressions_;
    std::vector<Entry> codeBlocks_;
};

constexpr std::array<CAssembly::Directive, 11> CAssembly::kDirectives = {{
    {".version", &CAssembly::ReadVersion},
    {".build", &CAssembly::ReadBuild},
    {".obsolete", &CAssembly::ReadObsolete},
    {".program", &CAssembly::ReadProgram},
    {".expression", &CAssembly::ReadExpression},
    {".codeblock", &CAssembly::ReadCodeBlock},
    {".global", &CAssembly::BeginGlobal, Section::Global},
    {".constant", &CAssembly::BeginConstant, Section::Constant},
    {".tag", &CAssembly::BeginNames, Section::Tag},
    {".struct", &CAssembly::BeginStruct, Section::Struct},
    {".code", &CAssembly::BeginNames, Section::Code},
}};

}  // namespace

bool CAssembler::Assemble(std::string_view fileName, std::string_view text, AssembledImage& out) {
    diagnostics_.clear();
    CAssembly(limits_, text, diagnostics_).Run(fileName, out);
    std::stable_sort(
        diagnostics_.begin(), diagnostics_.end(),
        [](const SourceDiagnostic& left, const SourceDiagnostic& right) { return left.line < right.line; });
    return diagnostics_.empty();
}

std::string FormatDiagnostics(std::string_view fileName, const std::vector<SourceDiagnostic>& diagnostics) {
    std::string text;
    for (const SourceDiagnostic& diagnostic : diagnostics)
        text += FormatText("%s:%u:%u: error: %s\n", fileName, diagnostic.line, diagnostic.column, diagnostic.text);
    if (diagnostics.size() >= CSourceCursor::kMaxDiagnostics)
        text += FormatText("%s: further errors are not shown\n", fileName);
    return text;
}
