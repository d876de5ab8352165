#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "compiler/Arena.h"
#include "compiler/Ast.h"
#include "compiler/Diagnostics.h"
#include "compiler/Options.h"
#include "compiler/Parser.h"
#include "compiler/Token.h"

namespace tn61131::st {

/// The recursive-descent parser of one file. A function Parse... begins at the first token of what it parses and leaves
/// off behind its last; it always gives a node.
///
/// Errors: the first one of a statement or declaration is reported and sets `panic_`; nothing more is reported until a
/// word or sign that can only belong to the grammar has been found again. Every loop takes at least one token a round
/// or ends, so that time is linear; recursion is counted by `Nest`.
class FileParser {
 public:
    FileParser(const SourceManager& sources, std::uint32_t file, const Switches& switches, NameTable& names,
               Arena& arena, Diagnostics& diagnostics);

    [[nodiscard]] ast::SourceUnit* ParseUnit();
    [[nodiscard]] ast::Expr* ParseLone();
    [[nodiscard]] std::span<ast::Stmt*> ParseLoneStatements();

 private:
    // --- tokens ---
    [[nodiscard]] const Token& At() const noexcept { return *at_; }
    [[nodiscard]] const Token& Ahead(std::uint32_t count) const noexcept {
        return at_ + count < &tokens_.back() ? at_[count] : tokens_.back();
    }
    [[nodiscard]] bool Is(TokenKind kind) const noexcept { return at_->kind == kind; }
    [[nodiscard]] bool Is(Keyword keyword) const noexcept { return at_->keyword == keyword; }
    [[nodiscard]] bool IsAtEnd() const noexcept { return at_->kind == TokenKind::End; }
    /// A word that can be a name here, contextual keywords included.
    [[nodiscard]] static bool IsName(const Token& token) noexcept {
        return token.kind == TokenKind::Identifier && GetKeywordRow(token.keyword).role == KeywordRole::Name;
    }
    void Take() noexcept {
        if (at_->kind != TokenKind::End) ++at_;
    }
    bool Accept(TokenKind kind) noexcept;
    bool Accept(Keyword keyword) noexcept;
    [[nodiscard]] SourceOffset EndOfPrevious() const noexcept { return at_ == tokens_.data() ? 0 : at_[-1].range.end; }
    [[nodiscard]] SourceRange RangeFrom(SourceOffset begin) const noexcept;
    [[nodiscard]] std::string_view TextOf(SourceRange range) const noexcept {
        return text_.substr(range.begin - start_, range.end - range.begin);
    }
    /// A token as messages name it: ';', END_IF, 'name', "end of file".
    [[nodiscard]] std::string Describe(const Token& token) const;
    /// Pragmas that stand in front of the current token, as texts.
    [[nodiscard]] std::span<std::string_view> TakeAttributes();

    // --- errors ---
    /// "{what} expected, found {token}", unless an error is being recovered from.
    void ReportExpected(std::string_view what);
    /// Takes the token, or reports that it was expected. Finding it ends the recovery from an error.
    bool Expect(TokenKind kind, std::string_view what);
    /// The same; where something else stands, looks for the word up to the end of the statement.
    bool ExpectWord(Keyword keyword);
    /// A name, or None and an error. `owner` is what the name is for: "a variable".
    [[nodiscard]] ast::Identifier ExpectName(std::string_view owner);
    void Hint(SourceRange range, std::string_view text);
    enum class Place : std::uint8_t { Statement, Declaration };
    /// The semicolon behind a statement or declaration. One that is missing is reported where it belongs, and costs
    /// nothing when what follows begins something new.
    void ExpectSemicolon(Place place);
    /// Any semicolons that are too many.
    void SkipExtraSemicolons();
    /// Skips to behind the next semicolon or to where something begins or ends; ends the recovery.
    void Skip(Place place);
    /// A word that no statement or declaration reaches beyond, or the end of the file.
    [[nodiscard]] static bool IsBound(const Token& token) noexcept {
        return token.kind == TokenKind::End || GetKeywordRow(token.keyword).role == KeywordRole::Bound;
    }
    /// Whether a new statement or declaration may begin at a token, as far as it and the next one tell.
    [[nodiscard]] bool Begins(Place place, const Token* token) const noexcept;
    [[nodiscard]] bool BeginsStatement(const Token* token) const noexcept;
    [[nodiscard]] bool BeginsDeclaration(const Token* token) const noexcept;

    /// Counts a level of nesting. Beyond kMaxNesting Ok() is false, the one message given, and recovery has begun.
    class Nest {
     public:
        explicit Nest(FileParser& parser);
        ~Nest() { --parser_.depth_; }
        Nest(const Nest&) = delete;
        Nest& operator=(const Nest&) = delete;
        [[nodiscard]] bool Ok() const noexcept { return ok_; }

     private:
        FileParser& parser_;
        bool ok_;
    };

    // --- lists ---
    /// Collects elements on a stack that all lists of the type share, and copies them to the arena.
    template <typename T>
    class List {
     public:
        explicit List(FileParser& parser)
            : arena_(parser.arena_), pool_(std::get<std::vector<T>>(parser.pools_)), base_(pool_.size()) {}
        ~List() { pool_.erase(pool_.begin() + static_cast<std::ptrdiff_t>(base_), pool_.end()); }
        List(const List&) = delete;
        List& operator=(const List&) = delete;
        void Add(const T& element) { pool_.push_back(element); }
        [[nodiscard]] std::size_t Size() const noexcept { return pool_.size() - base_; }
        [[nodiscard]] T& operator[](std::size_t index) noexcept { return pool_[base_ + index]; }
        [[nodiscard]] std::span<T> Finish() { return arena_.Copy(std::span<const T>(pool_).subspan(base_)); }

     private:
        Arena& arena_;
        std::vector<T>& pool_;
        std::size_t base_;
    };

    // --- expressions ---
    [[nodiscard]] ast::Expr* ParseExpression();
    /// Operators that bind at least as `level` does, behind an operand that is there already.
    [[nodiscard]] ast::Expr* ParseOperators(ast::Expr* left, int level);
    [[nodiscard]] ast::Expr* ParseOperand();
    /// A primary with what stands behind it: .member, [index], ^, (arguments).
    [[nodiscard]] ast::Expr* ParsePostfix();
    [[nodiscard]] ast::Expr* ParsePrimary();
    [[nodiscard]] ast::Expr* ParseWord();
    [[nodiscard]] ast::Expr* ParseParentheses();
    [[nodiscard]] ast::Expr* ParseLiteral(ast::LiteralKind kind);
    [[nodiscard]] ast::Expr* ParseMember(ast::Expr* base);
    [[nodiscard]] ast::Expr* ParseIndex(ast::Expr* base);
    [[nodiscard]] ast::LocatedExpr* ParseLocated();
    /// In parentheses, the opening one being next.
    [[nodiscard]] std::span<ast::Argument> ParseArguments();
    [[nodiscard]] ast::Argument ParseArgument();
    [[nodiscard]] ast::Expr* MakeError(SourceRange range);
    /// Notes how deep the tree of the last operand has become.
    void Raise(std::uint32_t height, SourceRange range);

    // --- initial values ---
    /// What stands behind := in a declaration; ends at the semicolon, so that 1, 2, 3 is an array.
    [[nodiscard]] ast::Expr* ParseInitializer();
    /// One value inside of an initial value, up to a comma or bracket.
    [[nodiscard]] ast::ArrayInitElement ParseArrayElement();
    [[nodiscard]] ast::Expr* ParseArrayInit();
    [[nodiscard]] ast::Expr* ParseOpenArrayInit(const ast::ArrayInitElement& first, SourceOffset begin, bool inStruct);
    [[nodiscard]] ast::Expr* ParseStructInit();
    [[nodiscard]] std::span<ast::StructInitElement> ParseStructElements();
    [[nodiscard]] bool IsStructInit() const noexcept;

    // --- types ---
    /// What a type stands for decides what may stand in parentheses behind its name.
    enum class TypePlace : std::uint8_t { Variable, TypeDeclaration, Other };
    [[nodiscard]] ast::TypeSpec* ParseType(TypePlace place, std::span<ast::Argument>* blockInit = nullptr);
    [[nodiscard]] ast::TypeSpec* ParseNamedType(TypePlace place, std::span<ast::Argument>* blockInit);
    [[nodiscard]] ast::TypeSpec* ParseTypeParentheses(ast::TypeSpec* base, TypePlace place,
                                                      std::span<ast::Argument>* blockInit);
    [[nodiscard]] ast::TypeSpec* ParseStringType(bool wide);
    [[nodiscard]] ast::TypeSpec* ParseArrayType();
    [[nodiscard]] ast::TypeSpec* ParsePointerType();
    [[nodiscard]] ast::TypeSpec* ParseStructType(ast::Identifier base);
    void SkipStruct();
    [[nodiscard]] ast::TypeSpec* ParseEnumType(ast::TypeSpec* base, SourceOffset begin);
    [[nodiscard]] bool IsEnumList() const noexcept;
    [[nodiscard]] std::span<ast::Identifier> ParsePath();
    /// A name with namespaces as one: a.b.
    [[nodiscard]] ast::Identifier ParseQualifiedName(std::string_view owner);
    void ParseTypeBlock(List<ast::TypeDecl*>& types);
    [[nodiscard]] ast::TypeDecl* ParseTypeDecl();

    // --- variables ---
    [[nodiscard]] static bool IsVarSection(Keyword keyword) noexcept;
    [[nodiscard]] ast::VarBlock* ParseVarBlock();
    void ParseQualifiers(ast::VarBlock& block);
    /// Declarations up to a word that ends them; `what` is each of them: "a variable".
    [[nodiscard]] std::span<ast::VarDecl*> ParseDeclarations(ast::VarSection section, std::string_view what);
    void ParseDeclaration(std::string_view what, List<ast::VarDecl*>& list);
    void ParsePathDeclaration(ast::VarSection section, List<ast::VarDecl*>& list);
    void ParseLocation(ast::VarDecl& variable);

    // --- statements ---
    /// Statements up to a word that no statement contains and that something waits for.
    [[nodiscard]] std::span<ast::Stmt*> ParseBody();
    void ParseStatement(List<ast::Stmt*>& list);
    void ParseBlock(List<ast::Stmt*>& list);
    void ParseJump(ast::StmtKind kind, List<ast::Stmt*>& list);
    /// `target` is the expression that the statement begins with.
    void ParseSimpleStatement(ast::Expr* target, List<ast::Stmt*>& list);
    /// Behind the sign.
    [[nodiscard]] ast::AssignStmt* ParseAssignment(ast::Expr* target, ast::AssignStmt::Mode mode);
    [[nodiscard]] bool TakeAssignment(ast::AssignStmt::Mode& mode);
    [[nodiscard]] ast::Stmt* ParseIf();
    [[nodiscard]] std::span<ast::Stmt*> ParseElse();
    [[nodiscard]] ast::Stmt* ParseCase();
    [[nodiscard]] std::span<ast::CaseLabel> ParseCaseLabels(ast::Expr* first);
    /// Up to the first value of the next branch, which is then in `nextLabel`.
    [[nodiscard]] std::span<ast::Stmt*> ParseCaseBody(ast::Expr*& nextLabel);
    [[nodiscard]] ast::Stmt* ParseFor();
    [[nodiscard]] ast::Stmt* ParseWhile();
    [[nodiscard]] ast::Stmt* ParseRepeat();
    /// The word that ends a block; a missing one is reported with its opener, once where several are missing.
    void ExpectEnd(Keyword end, const Token& opener);
    /// The semicolon behind the end of a block, which may be missing.
    void AcceptBlockSemicolon();
    /// From the word that opens a block nested too deep to behind its end.
    void SkipBlock();
    /// Blocks and declarations that wait for an end.
    [[nodiscard]] std::uint32_t& OpenCount(Keyword end) noexcept { return open_[static_cast<std::size_t>(end)]; }
    [[nodiscard]] bool IsOpen(Keyword end) const noexcept { return open_[static_cast<std::size_t>(end)] != 0; }
    /// ELSE, END_VAR and the like where nothing waits for them.
    [[nodiscard]] bool IsStrayBound() const noexcept;
    void SkipStrayBound();

    // --- program organisation units ---
    struct UnitLists;
    void ParseUnitItems(UnitLists& lists, Keyword end);
    [[nodiscard]] bool ParseUnitItem(UnitLists& lists);
    void AppendMember(ast::Pou& owner, ast::Pou* member);
    [[nodiscard]] ast::Pou* ParsePou(ast::PouKind kind, Keyword end);
    void SkipRestOfHeader();
    void ParseModifiers(ast::Pou& pou);
    void ParseInheritance(ast::Pou& pou);
    void ParsePouContent(ast::Pou& pou);
    /// A word at which the content of a program organisation unit ends.
    [[nodiscard]] static bool IsUnitBound(Keyword keyword) noexcept;
    [[nodiscard]] bool IsMember() const noexcept;
    [[nodiscard]] ast::Pou* ParseMember();
    [[nodiscard]] ast::Pou* ParseProperty();
    [[nodiscard]] ast::Pou* ParseAccessor(const ast::Pou& property);
    [[nodiscard]] ast::Pou* ParseAction();
    /// END_X, which may be missing at the end of the file.
    void ExpectPouEnd(Keyword end, const Token& opener);
    [[nodiscard]] ast::Namespace* ParseNamespace();
    void ParseUsing(List<std::span<ast::Identifier>>& list);

    // --- sequential function charts ---
    [[nodiscard]] bool IsSfc() const noexcept;
    [[nodiscard]] ast::Sfc* ParseSfc();
    [[nodiscard]] ast::SfcStep* ParseStep();
    [[nodiscard]] ast::SfcActionUse ParseActionUse();
    [[nodiscard]] ast::SfcTransition* ParseTransition();
    [[nodiscard]] std::span<ast::Identifier> ParseStepNames();
    [[nodiscard]] ast::SfcAction* ParseSfcAction();
    void SkipTo(Keyword end);

    // --- configurations ---
    [[nodiscard]] ast::Configuration* ParseConfiguration();
    [[nodiscard]] ast::Resource* ParseResource();
    void ParseTasks(ast::Resource& resource);
    [[nodiscard]] ast::TaskDecl* ParseTask();
    [[nodiscard]] ast::ProgramInstance* ParseProgramInstance();
    void ParseProgramArguments(ast::ProgramInstance& program);
    void SkipToBlock(std::string_view what);

    std::string_view text_;
    SourceOffset start_;
    const Switches& switches_;
    NameTable& names_;
    Arena& arena_;
    Diagnostics& diagnostics_;
    std::vector<Token> tokens_;
    std::vector<Pragma> pragmas_;
    const Token* at_;
    std::size_t nextPragma_ = 0;
    bool panic_ = false;
    bool nestingReported_ = false;
    const Token* missingEnd_ = nullptr;  ///< where an end was missed last
    std::uint32_t depth_ = 0;
    std::uint32_t depthOfBlocks_ = 0;                     ///< IF, CASE and so on around the current statement
    std::uint32_t height_ = 0;                            ///< of the tree of the last operand
    std::uint32_t parentheses_ = 0;                       ///< that are open
    std::array<std::uint32_t, kKeywords.size()> open_{};  ///< blocks that wait for each end
    std::tuple<std::vector<ast::Expr*>, std::vector<ast::Stmt*>, std::vector<ast::Argument>,
               std::vector<ast::Identifier>, std::vector<ast::ArrayInitElement>, std::vector<ast::StructInitElement>,
               std::vector<ast::ArrayDimension>, std::vector<ast::EnumValue>, std::vector<ast::VarDecl*>,
               std::vector<ast::VarBlock*>, std::vector<ast::IfBranch>, std::vector<ast::CaseBranch>,
               std::vector<ast::CaseLabel>, std::vector<ast::Pou*>, std::vector<ast::TypeDecl*>,
               std::vector<std::string_view>, std::vector<std::span<ast::Identifier>>, std::vector<ast::SfcStep*>,
               std::vector<ast::SfcTransition*>, std::vector<ast::SfcAction*>, std::vector<ast::SfcActionUse>,
               std::vector<ast::TaskDecl*>, std::vector<ast::ProgramInstance*>, std::vector<ast::Resource*>,
               std::vector<ast::BlockTask>, std::vector<ast::Configuration*>, std::vector<ast::Namespace*>>
        pools_;
};

}  // namespace tn61131::st
