// Evaluates parsed calculations.
#pragma once

#include "console/calc/calc_error.h"
#include "console/calc/expression.h"

namespace vell::console {

struct EvaluationContext {
    ExternalFunctions& functions;
    HostServices& services;
    const Variables& variables;
};

CalcResult<Value> evaluate(const Node& calculation, const EvaluationContext& context);

} // namespace vell::console
