#include "compiler/FileParser.h"
#include "value/ValueType.h"

namespace tn61131::st {

using ast::TypeSpec;
using ast::TypeSpecKind;

TypeSpec* FileParser::ParseType(TypePlace place, std::span<ast::Argument>* blockInit) {
    const SourceRange range = At().range;
    const Nest nest(*this);
    if (!nest.Ok()) {
        if (Is(Keyword::Struct) || Is(Keyword::Union)) SkipStruct();
        return arena_.New<TypeSpec>(TypeSpecKind::Error, range);
    }
    const bool isPointer = (Is(Keyword::Pointer) || Is(Keyword::Reference)) && Ahead(1).keyword == Keyword::To;
    if (isPointer || Is(Keyword::RefTo)) return ParsePointerType();
    switch (At().keyword) {
        case Keyword::Array: return ParseArrayType();
        case Keyword::Struct:
        case Keyword::Union: return ParseStructType({});
        case Keyword::String: return ParseStringType(false);
        case Keyword::WString: return ParseStringType(true);
        default: break;
    }
    if (Is(TokenKind::LeftParen)) return ParseEnumType(nullptr, range.begin);
    if (IsName(At())) return ParseNamedType(place, blockInit);
    ReportExpected("a type");
    return arena_.New<TypeSpec>(TypeSpecKind::Error, range);
}

TypeSpec* FileParser::ParseNamedType(TypePlace place, std::span<ast::Argument>* blockInit) {
    const SourceOffset begin = At().range.begin;
    const std::span<ast::Identifier> path = ParsePath();
    TypeSpec* type = arena_.New<ast::NamedTypeSpec>(TypeSpec{TypeSpecKind::Named, RangeFrom(begin)}, path);
    if (Is(Keyword::REdge) || Is(Keyword::FEdge)) {
        const bool rising = Is(Keyword::REdge);
        Take();
        return arena_.New<ast::EdgeTypeSpec>(TypeSpec{TypeSpecKind::Edge, RangeFrom(begin)}, rising);
    }
    return Is(TokenKind::LeftParen) ? ParseTypeParentheses(type, place, blockInit) : type;
}

bool FileParser::IsEnumList() const noexcept {
    const TokenKind next = Ahead(2).kind;
    return IsName(Ahead(1)) && (next == TokenKind::Comma || next == TokenKind::RightParen || next == TokenKind::Assign);
}

TypeSpec* FileParser::ParseTypeParentheses(TypeSpec* base, TypePlace place, std::span<ast::Argument>* blockInit) {
    const bool isElementary = CValueType::FindType(std::string(TextOf(base->range))) != ElementaryType::Undefined;
    const bool isBlock = place == TypePlace::Variable && blockInit != nullptr && !isElementary;
    if (!isBlock && IsEnumList()) return ParseEnumType(base, base->range.begin);
    Take();
    ++parentheses_;
    List<ast::Argument> arguments(*this);
    if (!isBlock || !Is(TokenKind::RightParen)) {
        do {
            arguments.Add(ParseArgument());
            const ast::Argument only = arguments[0];
            const bool canBeBound = arguments.Size() == 1 && only.value != nullptr && only.name.name == NameId::None;
            if (!canBeBound || (isBlock && !Is(TokenKind::Range))) continue;
            Expect(TokenKind::Range, "'..'");
            ast::Expr* upper = panic_ ? MakeError(At().range) : ParseExpression();
            if (Expect(TokenKind::RightParen, "')'") && !panic_) --parentheses_;
            return arena_.New<ast::SubrangeTypeSpec>(TypeSpec{TypeSpecKind::Subrange, RangeFrom(base->range.begin)},
                                                     base, only.value, upper);
        } while (!panic_ && Accept(TokenKind::Comma));
    }
    if (!isBlock) ReportExpected("a range");
    if (Expect(TokenKind::RightParen, "',' or ')'") && !panic_) --parentheses_;
    if (isBlock) *blockInit = arguments.Finish();
    return base;
}

TypeSpec* FileParser::ParseStringType(bool wide) {
    const SourceOffset begin = At().range.begin;
    Take();
    ast::Expr* length = nullptr;
    const bool isRound = Is(TokenKind::LeftParen);
    if (isRound || Is(TokenKind::LeftBracket)) {
        if (isRound) Hint(At().range, "the length of a string in round brackets");
        Take();
        ++parentheses_;
        length = ParseExpression();
        const bool closed = Expect(isRound ? TokenKind::RightParen : TokenKind::RightBracket, isRound ? "')'" : "']'");
        if (closed && !panic_) --parentheses_;
    }
    return arena_.New<ast::StringTypeSpec>(TypeSpec{TypeSpecKind::String, RangeFrom(begin)}, wide, length);
}

TypeSpec* FileParser::ParseArrayType() {
    const SourceOffset begin = At().range.begin;
    Take();
    List<ast::ArrayDimension> dimensions(*this);
    if (Expect(TokenKind::LeftBracket, "'['")) {
        ++parentheses_;
        do {
            ast::ArrayDimension dimension;
            if (!Accept(TokenKind::Star)) {
                dimension.lower = ParseExpression();
                Expect(TokenKind::Range, "'..'");
                dimension.upper = panic_ ? MakeError(At().range) : ParseExpression();
            }
            dimensions.Add(dimension);
        } while (!panic_ && Accept(TokenKind::Comma));
        if (Expect(TokenKind::RightBracket, "',' or ']'") && !panic_) --parentheses_;
    }
    const std::span<ast::ArrayDimension> bounds = dimensions.Finish();
    if (!Accept(Keyword::Of)) ReportExpected("OF");
    TypeSpec* element = panic_ ? arena_.New<TypeSpec>(TypeSpecKind::Error, At().range) : ParseType(TypePlace::Other);
    return arena_.New<ast::ArrayTypeSpec>(TypeSpec{TypeSpecKind::Array, RangeFrom(begin)}, bounds, element);
}

TypeSpec* FileParser::ParsePointerType() {
    const SourceOffset begin = At().range.begin;
    const TypeSpecKind kind = Is(Keyword::Reference) ? TypeSpecKind::Reference : TypeSpecKind::Pointer;
    const bool isRefTo = Is(Keyword::RefTo);
    Take();
    if (!isRefTo) Take();  // TO
    TypeSpec* target = ParseType(TypePlace::Other);
    return arena_.New<ast::PointerTypeSpec>(TypeSpec{kind, RangeFrom(begin)}, target, isRefTo);
}

TypeSpec* FileParser::ParseStructType(ast::Identifier base) {
    const Token opener = At();
    const bool isUnion = Is(Keyword::Union);
    const Keyword end = isUnion ? Keyword::EndUnion : Keyword::EndStruct;
    Take();
    const bool overlap = Is(Keyword::Overlap) && !BeginsDeclaration(at_);
    if (overlap) Take();
    if (Is(Keyword::Extends) && !BeginsDeclaration(at_)) {
        Take();
        base = ParseQualifiedName("the structure that is extended");
    }
    Accept(TokenKind::Colon);
    SkipExtraSemicolons();
    if (panic_) Skip(Place::Declaration);
    ++OpenCount(end);
    const std::span<ast::VarDecl*> fields = ParseDeclarations(ast::VarSection::Local, "a member");
    --OpenCount(end);
    ExpectEnd(end, opener);
    return arena_.New<ast::StructTypeSpec>(TypeSpec{TypeSpecKind::Struct, RangeFrom(opener.range.begin)}, base, fields,
                                           isUnion, overlap);
}

// A structure nested too deep is skipped to behind its end without recursion.
void FileParser::SkipStruct() {
    std::uint32_t depth = 0;
    do {
        const bool isEnd = Is(Keyword::EndStruct) || Is(Keyword::EndUnion);
        if (IsBound(At()) && !isEnd) return;
        // UNION is a name, too.
        const bool opensUnion = Is(Keyword::Union) && at_[-1].kind == TokenKind::Colon;
        if (Is(Keyword::Struct) || opensUnion) ++depth;
        if (isEnd) --depth;
        Take();
    } while (depth != 0);
}

TypeSpec* FileParser::ParseEnumType(TypeSpec* base, SourceOffset begin) {
    Take();
    ++parentheses_;
    List<ast::EnumValue> values(*this);
    do {
        ast::EnumValue value;
        value.name = ExpectName("an enumeration value");
        if (!panic_ && Accept(TokenKind::Assign)) value.value = ParseExpression();
        if (value.name.name != NameId::None) values.Add(value);
    } while (!panic_ && Accept(TokenKind::Comma));
    if (Expect(TokenKind::RightParen, "',' or ')'") && !panic_) --parentheses_;
    if (!panic_ && base == nullptr && IsName(At()) && !At().startsLine) {
        const SourceOffset baseBegin = At().range.begin;
        const std::span<ast::Identifier> path = ParsePath();
        base = arena_.New<ast::NamedTypeSpec>(TypeSpec{TypeSpecKind::Named, RangeFrom(baseBegin)}, path);
    }
    return arena_.New<ast::EnumTypeSpec>(TypeSpec{TypeSpecKind::Enum, RangeFrom(begin)}, base, values.Finish());
}

std::span<ast::Identifier> FileParser::ParsePath() {
    List<ast::Identifier> path(*this);
    path.Add(ExpectName("a type"));
    while (Is(TokenKind::Dot) && !panic_) {
        Take();
        path.Add(ExpectName("a type"));
    }
    return path.Finish();
}

ast::Identifier FileParser::ParseQualifiedName(std::string_view owner) {
    ast::Identifier name = ExpectName(owner);
    if (panic_ || !Is(TokenKind::Dot)) return name;
    std::string whole(TextOf(name.range));
    while (!panic_ && Accept(TokenKind::Dot)) {
        const ast::Identifier part = ExpectName(owner);
        if (part.name == NameId::None) break;
        whole += '.';
        whole += TextOf(part.range);
        name.range.end = part.range.end;
    }
    name.name = names_.Intern(whole);
    return name;
}

void FileParser::ParseTypeBlock(List<ast::TypeDecl*>& types) {
    // Pragmas in front of TYPE are meant for every type of the block; as a rule there is one.
    const std::span<std::string_view> shared = TakeAttributes();
    const Token opener = At();
    Take();
    if (Is(Keyword::Internal) && IsName(Ahead(1))) Take();
    ++OpenCount(Keyword::EndType);
    for (;;) {
        while (Accept(TokenKind::Semicolon))
            Hint(at_[-1].range, "superfluous ';'");
        if (IsBound(At())) break;
        if (GetKeywordRow(At().keyword).role == KeywordRole::Statement) break;
        ast::TypeDecl* const type = ParseTypeDecl();
        if (!shared.empty()) {
            List<std::string_view> attributes(*this);
            for (const std::string_view each : shared)
                attributes.Add(each);
            for (const std::string_view each : type->attributes)
                attributes.Add(each);
            type->attributes = attributes.Finish();
        }
        types.Add(type);
    }
    --OpenCount(Keyword::EndType);
    ExpectEnd(Keyword::EndType, opener);
    if (Accept(TokenKind::Semicolon)) Hint(at_[-1].range, "';' behind END_TYPE");
}

ast::TypeDecl* FileParser::ParseTypeDecl() {
    auto* const type = arena_.New<ast::TypeDecl>();
    const Token* const first = at_;
    type->attributes = TakeAttributes();
    type->name = ExpectName("a type");
    ast::Identifier base;
    if (!panic_ && Accept(Keyword::Extends)) base = ParseQualifiedName("the structure that is extended");
    Expect(TokenKind::Colon, "':'");
    if (!panic_) {
        const bool isStruct = base.name != NameId::None && Is(Keyword::Struct);
        type->type = isStruct ? ParseStructType(base) : ParseType(TypePlace::TypeDeclaration);
        if (!panic_ && Accept(TokenKind::Assign)) type->initial = ParseInitializer();
    } else {
        type->type = arena_.New<TypeSpec>(TypeSpecKind::Error, At().range);
    }
    const bool mayLackSemicolon = type->type->kind == TypeSpecKind::Struct || Is(Keyword::EndType);
    if (!panic_ && mayLackSemicolon && !Is(TokenKind::Semicolon)) {
        Hint(RangeFrom(EndOfPrevious()), "no ';' behind the declaration of a type");
    } else {
        ExpectSemicolon(Place::Declaration);
    }
    if (at_ == first) Take();
    return type;
}

}  // namespace tn61131::st
