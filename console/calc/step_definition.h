// The definition of a script step as the host reads it, and the values that a step receives.
#pragma once

#include "console/calc/calc_error.h"
#include "console/calc/value.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vell::console {

enum class StepParameterType : std::uint8_t { Calculation, Boolean, List };

std::string_view type_name(StepParameterType type); // as it stands in a definition

struct StepListValue {
    std::int64_t id = 0;
    std::u16string label;
};

struct StepParameter {
    StepParameterType type = StepParameterType::Calculation;
    int id = 0; // index in the vector of parameters
    std::u16string label;
    ValueType data_type = ValueType::Text; // of a calculation
    bool show_inline = false;
    std::vector<StepListValue> values; // of a list
    std::int64_t default_value = 0;    // of a list: the ID of a value; of a bool: 0 or 1
};

struct StepTarget {
    std::u16string label;
    ValueType data_type = ValueType::Text;
    bool show_inline = false;
};

struct StepDefinition {
    std::optional<StepTarget> target;      // without one the result is dropped
    std::vector<StepParameter> parameters; // in the order of the definition
    std::vector<std::string> ignored;      // what stands in the definition without effect
};

inline constexpr int max_step_parameter_id = 9;

CalcResult<StepDefinition> read_step_definition(std::u16string_view xml);

// A value given to a step; nullopt where it was left out.
struct StepArgument {
    std::optional<Value> value;
    std::size_t position = 0; // for errors
};

// The vector that the step's body receives: each value at the index that its ID names, empty data
// at those between. What is left out arrives as the default of a list or bool and as empty data for
// a calculation. A list takes the ID or the label of one of its values.
CalcResult<std::vector<Value>> step_vector(const StepDefinition& definition,
                                           std::span<const StepArgument> arguments);

} // namespace vell::console
