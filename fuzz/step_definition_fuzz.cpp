// Definitions of script steps: XML that a plug-in hands to the console host.
#include "console/calc/step_definition.h"
#include "console/calc/xml_reader.h"
#include "fuzz/input.h"
#include "src/base/utf8.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace vell::step_definition_fuzz {
namespace {

using namespace vell::console;

std::size_t deepest(const XmlElement& element) {
    std::size_t depth = 0;
    for (const XmlElement& child : element.children)
        depth = std::max(depth, deepest(child));
    return depth + 1;
}

bool has_value(const StepParameter& list, std::int64_t id) {
    return std::any_of(list.values.begin(), list.values.end(),
                       [id](const StepListValue& value) { return value.id == id; });
}

void check_definition(const StepDefinition& definition) {
    std::set<int> ids;
    for (const StepParameter& parameter : definition.parameters) {
        FUZZ_CHECK(parameter.id >= 0 && parameter.id <= max_step_parameter_id);
        FUZZ_CHECK(ids.insert(parameter.id).second);
        FUZZ_CHECK(parameter.type != StepParameterType::Boolean ||
                   (parameter.default_value | 1) == 1);
        FUZZ_CHECK(parameter.type != StepParameterType::List || parameter.values.empty() ||
                   has_value(parameter, parameter.default_value));
    }
    const auto vector = step_vector(definition, {});
    FUZZ_CHECK(vector && vector->size() == (ids.empty() ? 0U : 1U + *ids.rbegin()));

    std::vector<StepArgument> arguments;
    for (const StepParameter& parameter : definition.parameters)
        arguments.push_back({parameter.type == StepParameterType::List && !parameter.values.empty()
                                 ? Value(parameter.values.back().label)
                                 : Value(u"1"),
                             arguments.size()});
    const auto given = step_vector(definition, arguments);
    FUZZ_CHECK(given ? given->size() == vector->size() : given.error().position < arguments.size());
    arguments.push_back({std::nullopt, arguments.size()});
    FUZZ_CHECK(!step_vector(definition, arguments));
}

} // namespace

FUZZ_TARGET(step_definition) {
    const std::u16string document = utf16_from_utf8(fuzz::as_text(data, size));
    const auto root = read_xml(document);
    if (!root) {
        FUZZ_CHECK(root.error().position <= document.size());
        FUZZ_CHECK(caret_display(document, root.error()).find('^') != std::string::npos);
    } else {
        FUZZ_CHECK(!root->name.empty() && deepest(*root) <= 101);
    }
    const auto definition = read_step_definition(document);
    FUZZ_CHECK(root || !definition);
    if (definition)
        check_definition(*definition);
    return 0;
}

} // namespace vell::step_definition_fuzz
