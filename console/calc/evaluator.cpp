#include "console/calc/evaluator.h"

#include "console/model/unicode.h"

#include <cmath>

namespace vell::console {

namespace {

// Exact for whole exponents, through a double for others.
Value power(const Decimal& base, const Decimal& exponent) {
    constexpr std::int64_t largest_exact = 100'000;
    const std::int64_t whole = exponent.to_int64();
    if (!exponent.is_integer() || whole > largest_exact || whole < -largest_exact) {
        const double result = std::pow(base.to_double(), exponent.to_double());
        return std::isfinite(result) ? Value(Decimal::from_double(result)) : Value::invalid();
    }
    Decimal result(1);
    Decimal square = base;
    for (std::int64_t rest = whole < 0 ? -whole : whole; rest != 0; rest /= 2) {
        if (rest % 2 != 0)
            result = result * square;
        if (rest > 1)
            square = square * square;
    }
    if (whole >= 0)
        return result;
    const auto inverse = Decimal::divide(Decimal(1), result);
    return inverse ? Value(*inverse) : Value::invalid();
}

bool is_duration(const Value& value) {
    return value.time() || value.is_text() || value.number();
}

// The type that a sum or difference keeps from its operands: a moment moved by a number stays a
// moment, the distance of two moments does not.
Value sum_of_type(const Value& a, const Value& b, BinaryOperator operation, Decimal result) {
    const bool subtracts = operation == BinaryOperator::Subtract;
    const bool two_timestamps = a.timestamp() && b.timestamp();
    if (two_timestamps && subtracts)
        return Time{std::move(result)};
    if (a.timestamp() && is_duration(b))
        return Timestamp{std::move(result)};
    if (b.timestamp() && is_duration(a) && !subtracts)
        return Timestamp{std::move(result)};
    if ((a.date() && is_duration(b)) || (b.date() && is_duration(a) && !subtracts))
        return date_from_day(Decimal::truncate(result));
    const bool a_plain = a.number() || a.is_text();
    const bool b_plain = b.number() || b.is_text();
    if ((a.time() && (b.time() || b_plain)) || (b.time() && a_plain && !subtracts))
        return Time{std::move(result)};
    return result;
}

Value arithmetic(const Value& a, const Value& b, BinaryOperator operation) {
    if (a.is_invalid() || b.is_invalid())
        return Value::invalid();
    const Decimal left = a.as_number();
    const Decimal right = b.as_number();
    switch (operation) {
    case BinaryOperator::Add:
        return sum_of_type(a, b, operation, left + right);
    case BinaryOperator::Subtract:
        return sum_of_type(a, b, operation, left - right);
    case BinaryOperator::Multiply:
        return left * right;
    case BinaryOperator::Power:
        return power(left, right);
    default: {
        const auto quotient = Decimal::divide(left, right);
        return quotient ? Value(*quotient) : Value::invalid();
    }
    }
}

Value comparison(const Value& a, const Value& b, BinaryOperator operation) {
    const auto order = compare(a, b);
    if (!order)
        return Value::invalid();
    switch (operation) {
    case BinaryOperator::Equal:
        return Value::boolean(*order == 0);
    case BinaryOperator::NotEqual:
        return Value::boolean(*order != 0);
    case BinaryOperator::Less:
        return Value::boolean(*order < 0);
    case BinaryOperator::LessOrEqual:
        return Value::boolean(*order <= 0);
    case BinaryOperator::Greater:
        return Value::boolean(*order > 0);
    default:
        return Value::boolean(*order >= 0);
    }
}

class Evaluator {
  public:
    explicit Evaluator(const EvaluationContext& context) : context_(context) {}

    CalcResult<Value> value(const Node& node) {
        return std::visit([&](const auto& content) { return evaluate_node(node, content); },
                          node.content);
    }

  private:
    CalcResult<Value> evaluate_node(const Node&, const LiteralNode& literal) {
        return literal.value;
    }
    CalcResult<Value> evaluate_node(const Node&, const VariableNode& variable) {
        const auto found = context_.variables.find(variable.name);
        return found == context_.variables.end() ? Value() : found->second;
    }
    CalcResult<Value> evaluate_node(const Node&, const GetNode& get) {
        return context_.services.get(get.item);
    }
    CalcResult<Value> evaluate_node(const Node& node, const ListNode&) {
        return Failure{CalcError{"a list is not a value", node.position, node.length}};
    }
    CalcResult<Value> evaluate_node(const Node&, const PrefixNode& prefix);
    CalcResult<Value> evaluate_node(const Node&, const ChainNode& chain);
    CalcResult<Value> evaluate_node(const Node& node, const BuiltinNode& call);
    CalcResult<Value> evaluate_node(const Node& node, const ExternalNode& call);

    CalcResult<Value> link(Value left, const ChainNode::Link& link);
    CalcResult<std::vector<Value>> values(const std::vector<NodePtr>& nodes);
    CalcResult<Value> conditional(const std::vector<NodePtr>& arguments);
    CalcResult<Value> substituted(const std::vector<NodePtr>& arguments);

    const EvaluationContext& context_;
};

CalcResult<Value> Evaluator::evaluate_node(const Node&, const PrefixNode& prefix) {
    Value result = VELL_TRY(value(*prefix.operand));
    for (auto operation = prefix.operators.rbegin(); operation != prefix.operators.rend();
         ++operation) {
        if (result.is_invalid())
            break;
        if (*operation == PrefixOperator::Not)
            result = Value::boolean(!result.as_boolean());
        else if (*operation == PrefixOperator::Minus)
            result = result.time() ? Value(Time{-result.as_number()}) : Value(-result.as_number());
    }
    return result;
}

CalcResult<Value> Evaluator::evaluate_node(const Node&, const ChainNode& chain) {
    Value result = VELL_TRY(value(*chain.first));
    for (const ChainNode::Link& next : chain.rest)
        result = VELL_TRY(link(std::move(result), next));
    return result;
}

CalcResult<Value> Evaluator::link(Value left, const ChainNode::Link& link) {
    const BinaryOperator operation = link.operation;
    // The right side of a settled "and" or "or" is not evaluated.
    if (operation == BinaryOperator::And && !left.is_invalid() && !left.as_boolean())
        return Value::boolean(false);
    if (operation == BinaryOperator::Or && left.as_boolean())
        return Value::boolean(true);

    const Value right = VELL_TRY(value(*link.operand));
    switch (operation) {
    case BinaryOperator::And:
    case BinaryOperator::Or:
    case BinaryOperator::Xor:
        if (left.is_invalid() || right.is_invalid())
            return Value::invalid();
        return Value::boolean(operation == BinaryOperator::Xor
                                  ? left.as_boolean() != right.as_boolean()
                                  : right.as_boolean());
    case BinaryOperator::Concatenate: {
        // Appends in place, so that a long chain costs no more than its result.
        std::u16string text = std::move(left).as_text();
        text += right.text() ? *right.text() : right.as_text();
        return Value(std::move(text));
    }
    case BinaryOperator::Add:
    case BinaryOperator::Subtract:
    case BinaryOperator::Multiply:
    case BinaryOperator::Divide:
    case BinaryOperator::Power:
        return arithmetic(left, right, operation);
    default:
        return comparison(left, right, operation);
    }
}

CalcResult<std::vector<Value>> Evaluator::values(const std::vector<NodePtr>& nodes) {
    std::vector<Value> result;
    result.reserve(nodes.size());
    for (const NodePtr& node : nodes)
        result.push_back(VELL_TRY(value(*node)));
    return result;
}

// If and Case: pairs of a test and its result, then perhaps a default.
CalcResult<Value> Evaluator::conditional(const std::vector<NodePtr>& arguments) {
    std::size_t index = 0;
    for (; index + 1 < arguments.size(); index += 2) {
        const Value test = VELL_TRY(value(*arguments[index]));
        if (test.as_boolean())
            return value(*arguments[index + 1]);
    }
    return index < arguments.size() ? value(*arguments[index]) : CalcResult<Value>(Value());
}

CalcResult<Value> Evaluator::substituted(const std::vector<NodePtr>& arguments) {
    std::u16string result = VELL_TRY(value(*arguments[0])).as_text();
    if (!std::holds_alternative<ListNode>(arguments[1]->content)) {
        const Value search = VELL_TRY(value(*arguments[1]));
        const Value replacement = VELL_TRY(value(*arguments[2]));
        return Value(substitute(result, search.as_text(), replacement.as_text()));
    }
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const auto& pair = std::get<ListNode>(arguments[i]->content);
        const std::vector<Value> texts = VELL_TRY(values(pair.items));
        result = substitute(result, texts[0].as_text(), texts[1].as_text());
    }
    return Value(std::move(result));
}

CalcResult<Value> Evaluator::evaluate_node(const Node& node, const BuiltinNode& call) {
    switch (call.function->kind) {
    case BuiltinKind::If:
    case BuiltinKind::Case:
        return conditional(call.arguments);
    case BuiltinKind::Substitute:
        return substituted(call.arguments);
    case BuiltinKind::Plain:
    case BuiltinKind::FileContainer:
        break;
    }
    std::vector<Value> arguments = VELL_TRY(values(call.arguments));
    if (call.function->kind == BuiltinKind::Plain)
        return call.function->body(arguments);
    auto container = context_.services.container_from_file(arguments[0].as_text());
    if (!container)
        return Failure{CalcError{container.error(), node.position, node.length}};
    return std::move(container).value();
}

CalcResult<Value> Evaluator::evaluate_node(const Node& node, const ExternalNode& call) {
    const std::vector<Value> arguments = VELL_TRY(values(call.arguments));
    auto result = context_.functions.call(call.function, arguments);
    if (!result)
        return Failure{CalcError{utf8_from_utf16(call.function.name) + ": " + result.error(),
                                 node.position, node.length}};
    return std::move(result).value();
}

} // namespace

CalcResult<Value> evaluate(const Node& calculation, const EvaluationContext& context) {
    return Evaluator(context).value(calculation);
}

} // namespace vell::console
