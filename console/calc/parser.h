// Reads calculations and the statements of a console session.
#pragma once

#include "console/calc/calc_error.h"
#include "console/calc/expression.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vell::console {

// Parentheses, argument lists and brackets may be nested this deep.
inline constexpr int max_nesting = 200;

// Function names and argument counts are settled here, before anything is evaluated.
CalcResult<NodePtr> parse_calculation(std::u16string_view source,
                                      const ExternalFunctions& functions);

struct EvaluateStatement { // EXPR
    NodePtr calculation;
};
struct AssignStatement {     // $name = EXPR
    std::u16string variable; // lower case
    NodePtr calculation;
};
struct StepStatement { // step "NAME" [ ARG ; … ]
    struct Argument {
        std::size_t position = 0;
        NodePtr calculation; // null when omitted
    };
    std::u16string name;
    std::size_t name_position = 0;
    std::size_t name_length = 0;
    std::vector<Argument> arguments;
};
struct EmptyStatement {}; // a blank line or a comment

using Statement = std::variant<EmptyStatement, EvaluateStatement, AssignStatement, StepStatement>;

CalcResult<Statement> parse_statement(std::u16string_view source,
                                      const ExternalFunctions& functions);

} // namespace vell::console
