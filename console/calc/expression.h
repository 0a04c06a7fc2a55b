// A parsed calculation. Runs of operators of one precedence are kept flat, so the depth of the tree
// is the depth of the nesting that a person wrote, which the parser bounds.
#pragma once

#include "console/calc/builtins.h"
#include "console/calc/seams.h"
#include "console/calc/value.h"

#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace vell::console {

struct Node;
using NodePtr = std::unique_ptr<const Node>;

enum class PrefixOperator : std::uint8_t { Plus, Minus, Not };

enum class BinaryOperator : std::uint8_t {
    Or,
    Xor,
    And,
    Equal,
    NotEqual,
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    Concatenate,
    Add,
    Subtract,
    Multiply,
    Divide,
    Power,
};

struct LiteralNode {
    Value value;
};
struct VariableNode {
    std::u16string name; // lower case
};
struct PrefixNode {
    std::vector<PrefixOperator> operators; // as written; the last is applied first
    NodePtr operand;
};
struct ChainNode {
    struct Link {
        BinaryOperator operation;
        NodePtr operand;
    };
    NodePtr first;
    std::vector<Link> rest; // applied from left to right
};
struct GetNode {
    GetItem item;
};
struct BuiltinNode {
    const Builtin* function;
    std::vector<NodePtr> arguments;
};
struct ListNode { // [ a ; b ], an argument of Substitute
    std::vector<NodePtr> items;
};
struct ExternalNode {
    ExternalFunction function;
    std::vector<NodePtr> arguments;
};

struct Node {
    std::size_t position = 0;
    std::size_t length = 1;
    std::variant<LiteralNode, VariableNode, PrefixNode, ChainNode, GetNode, BuiltinNode, ListNode,
                 ExternalNode>
        content;
};

} // namespace vell::console
