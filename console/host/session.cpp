#include "console/host/session.h"

#include "console/calc/suggestion.h"
#include "console/host/container_file.h"
#include "console/host/host_services.h"
#include "console/model/unicode.h"

namespace vell::console {

namespace {

constexpr fm::Errcode calculation_error = 1200; // the host's code for any error in a calculation

} // namespace

Session::Session(PluginHost& host) : host_(host) {
    for (std::size_t i = 0; i < host.functions().size(); ++i) {
        const RegisteredFunction& entry = host.functions()[i];
        functions_.push_back(
            {entry.name, entry.prototype, entry.min_arguments, entry.max_arguments, i});
    }
    StandIn_SetEvaluator(&Session::evaluate_for_plugin, this);
}

Session::~Session() {
    StandIn_SetEvaluator(nullptr, nullptr);
}

CalcResult<Value> Session::evaluate(std::u16string_view calculation) {
    const NodePtr root = VELL_TRY(parse_calculation(calculation, *this));
    return evaluate(*root);
}

CalcResult<Value> Session::evaluate(const Node& calculation) {
    return console::evaluate(calculation, {*this, *this, variables_});
}

CalcResult<StatementOutcome> Session::run(std::u16string_view statement) {
    Statement parsed = VELL_TRY(parse_statement(statement, *this));
    if (const auto* step = std::get_if<StepStatement>(&parsed))
        return StatementOutcome{StatementKind::Step, VELL_TRY(run_step(*step))};
    if (const auto* calculation = std::get_if<EvaluateStatement>(&parsed))
        return StatementOutcome{StatementKind::Evaluate,
                                VELL_TRY(evaluate(*calculation->calculation))};
    if (const auto* assignment = std::get_if<AssignStatement>(&parsed)) {
        Value value = VELL_TRY(evaluate(*assignment->calculation));
        variables_.insert_or_assign(assignment->variable, value);
        return StatementOutcome{StatementKind::Assign, std::move(value)};
    }
    return StatementOutcome{};
}

CalcResult<const RegisteredStep*> Session::find_step(std::u16string_view name) const {
    if (const RegisteredStep* step = host_.find_step(name))
        return step;
    std::vector<std::u16string_view> known;
    for (const RegisteredStep& step : host_.steps())
        known.push_back(step.name);
    std::string message = known.empty()
                              ? "the plug-in has registered no script steps"
                              : "there is no script step \"" + utf8_from_utf16(name) + "\"";
    if (const auto suggestion = closest_name(name, known))
        message += "; is \"" + utf8_from_utf16(*suggestion) + "\" meant?";
    return Failure{CalcError{message}};
}

CalcResult<Value> Session::run_step(const StepStatement& statement) {
    const auto step = find_step(statement.name);
    if (!step)
        return Failure{
            CalcError{step.error().message, statement.name_position, statement.name_length}};
    std::vector<StepArgument> arguments;
    for (const StepStatement::Argument& argument : statement.arguments) {
        arguments.push_back({std::nullopt, argument.position});
        if (argument.calculation)
            arguments.back().value = VELL_TRY(evaluate(*argument.calculation));
    }
    return host_.run_step(**step, arguments);
}

CalcResult<Value> Session::run_step(std::u16string_view name,
                                    std::span<const StepArgument> arguments) {
    return host_.run_step(*VELL_TRY(find_step(name)), arguments);
}

Result<Value, std::string> Session::call(const ExternalFunction& function,
                                         std::span<const Value> arguments) {
    const RegisteredFunction& called = host_.functions()[function.handle];
    if (watcher_)
        watcher_(called, arguments);
    return host_.call(called, arguments);
}

Value Session::get(GetItem item) {
    return item == GetItem::FilePath ? Value(current_file_) : host_answer(item, host_);
}

Result<Value, std::string> Session::container_from_file(std::u16string_view path) {
    return Value(
        ContainerPtr(std::make_shared<HostContainer>(VELL_TRY(read_container_file(path)))));
}

fm::Errcode Session::evaluate_for_plugin(const fm::ExprEnv*, const fm::Text* expression,
                                         fm::Data* result, void* context) {
    // An exception must not travel through the plug-in.
    try {
        const auto value = static_cast<Session*>(context)->evaluate(text_of(expression));
        if (!value)
            return calculation_error;
        assign(result, *value);
        return 0;
    } catch (const std::exception&) {
        return calculation_error;
    }
}

} // namespace vell::console
