#include "console/calc/parser.h"

#include "console/calc/lexer.h"
#include "console/calc/suggestion.h"
#include "console/model/unicode.h"

#include <utility>

namespace vell::console {

namespace {

struct OperatorEntry {
    BinaryOperator operation;
    int level; // higher binds tighter
};

constexpr int lowest_level = 0;

std::optional<OperatorEntry> operator_of(TokenKind kind) {
    switch (kind) {
    case TokenKind::Equal:
        return OperatorEntry{BinaryOperator::Equal, 2};
    case TokenKind::NotEqual:
        return OperatorEntry{BinaryOperator::NotEqual, 2};
    case TokenKind::Less:
        return OperatorEntry{BinaryOperator::Less, 2};
    case TokenKind::LessOrEqual:
        return OperatorEntry{BinaryOperator::LessOrEqual, 2};
    case TokenKind::Greater:
        return OperatorEntry{BinaryOperator::Greater, 2};
    case TokenKind::GreaterOrEqual:
        return OperatorEntry{BinaryOperator::GreaterOrEqual, 2};
    case TokenKind::Ampersand:
        return OperatorEntry{BinaryOperator::Concatenate, 3};
    case TokenKind::Plus:
        return OperatorEntry{BinaryOperator::Add, 4};
    case TokenKind::Minus:
        return OperatorEntry{BinaryOperator::Subtract, 4};
    case TokenKind::Times:
        return OperatorEntry{BinaryOperator::Multiply, 5};
    case TokenKind::Divide:
        return OperatorEntry{BinaryOperator::Divide, 5};
    case TokenKind::Power:
        return OperatorEntry{BinaryOperator::Power, 6};
    default:
        return std::nullopt;
    }
}

std::optional<OperatorEntry> operator_of(std::u16string_view name) {
    if (equal_ignoring_case(name, u"and"))
        return OperatorEntry{BinaryOperator::And, 1};
    if (equal_ignoring_case(name, u"or"))
        return OperatorEntry{BinaryOperator::Or, lowest_level};
    if (equal_ignoring_case(name, u"xor"))
        return OperatorEntry{BinaryOperator::Xor, lowest_level};
    return std::nullopt;
}

template <typename Content>
NodePtr make_node(const Token& token, Content content) {
    return std::make_unique<const Node>(Node{token.position, token.length, std::move(content)});
}

std::string counts_text(int minimum, int maximum) {
    if (maximum < 0)
        return "at least " + std::to_string(minimum) + (minimum == 1 ? " argument" : " arguments");
    std::string text = maximum == 0 ? "no" : std::to_string(minimum);
    if (maximum != minimum)
        text += " to " + std::to_string(maximum);
    return text + (maximum == 1 ? " argument" : " arguments");
}

bool count_fits(int minimum, int maximum, std::size_t count) {
    return std::cmp_greater_equal(count, minimum) &&
           (maximum < 0 || std::cmp_less_equal(count, maximum));
}

CalcError wrong_count(const Token& name, std::string_view prototype, const std::string& counts,
                      std::size_t given) {
    return {std::string(prototype) + " takes " + counts + ", " +
                (given == 0 ? "none" : std::to_string(given)) +
                (given == 1 ? " is given" : " are given"),
            name.position, name.length};
}

class Parser {
  public:
    Parser(std::u16string_view source, std::vector<Token> tokens,
           const ExternalFunctions& functions)
        : source_(source), tokens_(std::move(tokens)), functions_(functions) {}

    CalcResult<NodePtr> whole_calculation();
    CalcResult<Statement> statement();

  private:
    const Token& current() const { return tokens_[index_]; }
    const Token& following() const { return tokens_[std::min(index_ + 1, tokens_.size() - 1)]; }
    bool at(TokenKind kind) const { return current().kind == kind; }
    Token take() { return at(TokenKind::End) ? current() : tokens_[index_++]; }
    std::u16string_view text_of(const Token& token) const {
        return source_.substr(token.position, token.length);
    }
    std::optional<OperatorEntry> binary_operator() const {
        return at(TokenKind::Name) ? operator_of(text_of(current())) : operator_of(current().kind);
    }
    CalcError unexpected(const std::string& wanted) const;

    CalcResult<NodePtr> expression(int level);
    CalcResult<NodePtr> prefixed();
    CalcResult<NodePtr> operand();
    CalcResult<NodePtr> parenthesized();
    CalcResult<NodePtr> number();
    CalcResult<NodePtr> named();
    CalcResult<NodePtr> get_call(const Token& name);
    CalcResult<NodePtr> builtin_call(const Token& name, const Builtin& function);
    CalcResult<NodePtr> external_call(const Token& name);
    CalcResult<std::vector<NodePtr>> arguments(bool lists_allowed);
    CalcResult<NodePtr> list();
    CalcError unknown_name(const Token& name) const;

    CalcResult<Statement> assignment();
    CalcResult<Statement> step();

    std::u16string_view source_;
    std::vector<Token> tokens_;
    const ExternalFunctions& functions_;
    std::size_t index_ = 0;
    int nesting_ = 0;
};

CalcError Parser::unexpected(const std::string& wanted) const {
    if (at(TokenKind::End))
        return {wanted + " is missing at the end", current().position};
    return {wanted + " is expected here, not " + utf8_from_utf16(text_of(current()).substr(0, 40)),
            current().position, current().length};
}

CalcResult<NodePtr> Parser::whole_calculation() {
    NodePtr root = VELL_TRY(expression(lowest_level));
    if (at(TokenKind::RightParenthesis))
        return Failure{CalcError{"this ) has no ( before it", current().position}};
    if (!at(TokenKind::End))
        return Failure{unexpected("an operator")};
    return root;
}

// Operators of `level` and above. Those of the same level stay in one chain.
CalcResult<NodePtr> Parser::expression(int level) {
    NodePtr left = VELL_TRY(prefixed());
    auto found = binary_operator();
    while (found && found->level >= level) {
        const int chain_level = found->level;
        const Token start = current();
        ChainNode chain{std::move(left), {}};
        while (found && found->level >= chain_level) {
            take();
            chain.rest.push_back({found->operation, VELL_TRY(expression(chain_level + 1))});
            found = binary_operator();
        }
        left = make_node(start, std::move(chain));
    }
    return left;
}

CalcResult<NodePtr> Parser::prefixed() {
    const Token start = current();
    PrefixNode prefix;
    for (;; take()) {
        if (at(TokenKind::Minus))
            prefix.operators.push_back(PrefixOperator::Minus);
        else if (at(TokenKind::Plus))
            prefix.operators.push_back(PrefixOperator::Plus);
        else if (at(TokenKind::Name) && equal_ignoring_case(text_of(current()), u"not"))
            prefix.operators.push_back(PrefixOperator::Not);
        else
            break;
    }
    NodePtr value = VELL_TRY(operand());
    if (prefix.operators.empty())
        return value;
    prefix.operand = std::move(value);
    return make_node(start, std::move(prefix));
}

CalcResult<NodePtr> Parser::operand() {
    switch (current().kind) {
    case TokenKind::Text: {
        const Token token = take();
        return make_node(token, LiteralNode{literal_text(text_of(token))});
    }
    case TokenKind::LineBreak:
        return make_node(take(), LiteralNode{Value(u"\r")});
    case TokenKind::Number:
        return number();
    case TokenKind::Variable: {
        const Token token = take();
        return make_node(token, VariableNode{lower_case(text_of(token))});
    }
    case TokenKind::LeftParenthesis:
        return parenthesized();
    case TokenKind::Name:
        if (!operator_of(text_of(current())))
            return named();
        break;
    case TokenKind::LeftBracket:
        return Failure{
            CalcError{"a list in brackets is only understood by Substitute", current().position}};
    default:
        break;
    }
    return Failure{unexpected("a value")};
}

CalcResult<NodePtr> Parser::parenthesized() {
    const Token open = take();
    if (++nesting_ > max_nesting)
        return Failure{CalcError{"the calculation is nested more than " +
                                     std::to_string(max_nesting) + " levels deep",
                                 open.position}};
    NodePtr inner = VELL_TRY(expression(lowest_level));
    --nesting_;
    if (!at(TokenKind::RightParenthesis))
        return Failure{at(TokenKind::End) ? CalcError{"this ( is not closed", open.position}
                                          : unexpected("an operator or a )")};
    take();
    return inner;
}

CalcResult<NodePtr> Parser::number() {
    const Token token = take();
    const std::string digits = utf8_from_utf16(text_of(token));
    const auto value = Decimal::parse(digits);
    if (!value)
        return Failure{CalcError{digits + " is not a number", token.position, token.length}};
    return make_node(token, LiteralNode{Value(*value)});
}

CalcResult<NodePtr> Parser::named() {
    const Token name = take();
    if (equal_ignoring_case(text_of(name), u"Get"))
        return get_call(name);
    if (const Builtin* function = find_builtin(text_of(name)))
        return builtin_call(name, *function);
    return external_call(name);
}

CalcResult<NodePtr> Parser::get_call(const Token& name) {
    if (!at(TokenKind::LeftParenthesis))
        return Failure{CalcError{"Get needs a name in parentheses, such as Get( CurrentDate )",
                                 name.position, name.length}};
    take();
    const Token item_name = take();
    const auto item =
        item_name.kind == TokenKind::Name ? find_get_item(text_of(item_name)) : std::nullopt;
    if (!item) {
        std::string known;
        for (const GetItemName& entry : get_items())
            known += (known.empty() ? "" : ", ") + utf8_from_utf16(entry.name);
        return Failure{CalcError{"Get( … ) knows " + known, item_name.position, item_name.length}};
    }
    if (!at(TokenKind::RightParenthesis))
        return Failure{unexpected("a )")};
    take();
    return make_node(name, GetNode{*item});
}

CalcResult<NodePtr> Parser::builtin_call(const Token& name, const Builtin& function) {
    auto given = VELL_TRY(arguments(function.kind == BuiltinKind::Substitute));
    // Substitute( text ; [ a ; b ] ; … ) has its pairs in lists.
    const bool pairs = given.size() >= 2 && std::holds_alternative<ListNode>(given[1]->content);
    if (!count_fits(function.min_arguments, function.max_arguments, given.size() + (pairs ? 1 : 0)))
        return Failure{wrong_count(name, function.prototype,
                                   counts_text(function.min_arguments, function.max_arguments),
                                   given.size())};
    if (function.kind == BuiltinKind::Substitute && !pairs && given.size() != 3)
        return Failure{wrong_count(name, function.prototype, "3 arguments or pairs in brackets",
                                   given.size())};
    for (std::size_t i = 0; i < given.size(); ++i) {
        const bool is_list = std::holds_alternative<ListNode>(given[i]->content);
        if (is_list != (pairs && i > 0))
            return Failure{CalcError{is_list ? "a list in brackets cannot stand here"
                                             : "a pair in brackets is expected here",
                                     given[i]->position, given[i]->length}};
    }
    return make_node(name, BuiltinNode{&function, std::move(given)});
}

CalcResult<NodePtr> Parser::external_call(const Token& name) {
    const ExternalFunction* first = nullptr;
    std::string counts;
    std::vector<const ExternalFunction*> candidates;
    for (const ExternalFunction& entry : functions_.all()) {
        if (equal_ignoring_case(entry.name, text_of(name)))
            candidates.push_back(&entry);
    }
    if (candidates.empty())
        return Failure{unknown_name(name)};
    auto given = VELL_TRY(arguments(false));
    for (const ExternalFunction* entry : candidates) {
        if (count_fits(entry->min_arguments, entry->max_arguments, given.size()))
            return make_node(name, ExternalNode{*entry, std::move(given)});
        counts += (first ? " or " : "") + counts_text(entry->min_arguments, entry->max_arguments);
        first = entry; // the last prototype is the one with most arguments
    }
    return Failure{wrong_count(name, utf8_from_utf16(first->prototype), counts, given.size())};
}

// ( a ; b ; … ), or nothing at all for a function without arguments.
CalcResult<std::vector<NodePtr>> Parser::arguments(bool lists_allowed) {
    std::vector<NodePtr> result;
    if (!at(TokenKind::LeftParenthesis))
        return result;
    const Token open = take();
    if (++nesting_ > max_nesting)
        return Failure{CalcError{"the calculation is nested more than " +
                                     std::to_string(max_nesting) + " levels deep",
                                 open.position}};
    if (!at(TokenKind::RightParenthesis)) {
        for (;; take()) {
            result.push_back(lists_allowed && at(TokenKind::LeftBracket)
                                 ? VELL_TRY(list())
                                 : VELL_TRY(expression(lowest_level)));
            if (!at(TokenKind::Semicolon))
                break;
        }
        if (!at(TokenKind::RightParenthesis))
            return Failure{at(TokenKind::End) ? CalcError{"this ( is not closed", open.position}
                                              : unexpected("an operator, a ; or a )")};
    }
    take();
    --nesting_;
    return result;
}

// [ search ; replacement ]
CalcResult<NodePtr> Parser::list() {
    const Token open = take();
    ListNode content;
    content.items.push_back(VELL_TRY(expression(lowest_level)));
    if (!at(TokenKind::Semicolon))
        return Failure{unexpected("a ;")};
    take();
    content.items.push_back(VELL_TRY(expression(lowest_level)));
    if (!at(TokenKind::RightBracket))
        return Failure{unexpected("a ]")};
    take();
    return make_node(open, std::move(content));
}

CalcError Parser::unknown_name(const Token& name) const {
    const std::u16string_view text = text_of(name);
    std::vector<std::u16string_view> known = {u"Get"};
    for (const Builtin& function : builtins())
        known.push_back(function.name);
    for (const ExternalFunction& function : functions_.all())
        known.push_back(function.name);
    std::string message = "there is no function " + utf8_from_utf16(text);
    if (const auto suggestion = closest_name(text, known))
        message += "; is " + utf8_from_utf16(*suggestion) + " meant?";
    return {message, name.position, name.length};
}

CalcResult<Statement> Parser::statement() {
    if (at(TokenKind::End))
        return Statement{EmptyStatement{}};
    if (at(TokenKind::Variable) && following().kind == TokenKind::Equal)
        return assignment();
    if (at(TokenKind::Name) && equal_ignoring_case(text_of(current()), u"step"))
        return step();
    return Statement{EvaluateStatement{VELL_TRY(whole_calculation())}};
}

CalcResult<Statement> Parser::assignment() {
    std::u16string name = lower_case(text_of(take()));
    take();
    NodePtr calculation = VELL_TRY(whole_calculation());
    return Statement{AssignStatement{std::move(name), std::move(calculation)}};
}

CalcResult<Statement> Parser::step() {
    take();
    if (!at(TokenKind::Text))
        return Failure{unexpected("the name of a script step in quotes")};
    const Token name = take();
    StepStatement result{literal_text(text_of(name)), name.position, name.length, {}};
    if (at(TokenKind::End))
        return Statement{std::move(result)};
    if (!at(TokenKind::LeftBracket))
        return Failure{unexpected("a [ with the step's parameters")};
    const Token open = take();
    if (at(TokenKind::RightBracket)) {
        take();
    } else {
        for (bool more = true; more;) {
            StepStatement::Argument argument{current().position, nullptr};
            if (!at(TokenKind::Semicolon) && !at(TokenKind::RightBracket))
                argument.calculation = VELL_TRY(expression(lowest_level));
            result.arguments.push_back(std::move(argument));
            if (!at(TokenKind::Semicolon) && !at(TokenKind::RightBracket))
                return Failure{at(TokenKind::End) ? CalcError{"this [ is not closed", open.position}
                                                  : unexpected("an operator, a ; or a ]")};
            more = take().kind == TokenKind::Semicolon;
        }
    }
    if (!at(TokenKind::End))
        return Failure{unexpected("the end of the line")};
    return Statement{std::move(result)};
}

} // namespace

CalcResult<NodePtr> parse_calculation(std::u16string_view source,
                                      const ExternalFunctions& functions) {
    Parser parser(source, VELL_TRY(tokenize(source)), functions);
    return parser.whole_calculation();
}

CalcResult<Statement> parse_statement(std::u16string_view source,
                                      const ExternalFunctions& functions) {
    Parser parser(source, VELL_TRY(tokenize(source)), functions);
    return parser.statement();
}

} // namespace vell::console
