// A calculation session on a running plug-in: variables, calculations and script steps.
#pragma once

#include "console/calc/evaluator.h"
#include "console/calc/parser.h"
#include "console/host/plugin_host.h"

namespace vell::console {

enum class StatementKind : std::uint8_t { Empty, Evaluate, Assign, Step };

struct StatementOutcome {
    StatementKind kind = StatementKind::Empty;
    Value value; // also of an assignment
};

// The plug-in must have been started before, and the session ends before its host. Expressions that
// the plug-in hands to the host are evaluated in the session, too. evaluate() may run on several
// threads at once as long as no statement is run.
class Session : private ExternalFunctions, private HostServices {
  public:
    explicit Session(PluginHost& host);
    ~Session() override;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    CalcResult<Value> evaluate(std::u16string_view calculation);
    CalcResult<StatementOutcome> run(std::u16string_view statement);
    CalcResult<Value> run_step(std::u16string_view name, std::span<const StepArgument> arguments);

    // What Get( FilePath ) answers: empty at first.
    void set_current_file(std::u16string file_path) { current_file_ = std::move(file_path); }

    Variables& variables() { return variables_; }

    // Told of each call of the plug-in's functions, before it.
    using CallWatcher =
        std::function<void(const RegisteredFunction& function, std::span<const Value> arguments)>;
    void watch_calls(CallWatcher watcher) { watcher_ = std::move(watcher); }

  private:
    std::span<const ExternalFunction> all() const override { return functions_; }
    Result<Value, std::string> call(const ExternalFunction& function,
                                    std::span<const Value> arguments) override;
    Value get(GetItem item) override;
    Result<Value, std::string> container_from_file(std::u16string_view path) override;

    CalcResult<Value> evaluate(const Node& calculation);
    CalcResult<Value> run_step(const StepStatement& statement);
    CalcResult<const RegisteredStep*> find_step(std::u16string_view name) const;
    static fm::Errcode evaluate_for_plugin(const fm::ExprEnv* environment,
                                           const fm::Text* expression, fm::Data* result,
                                           void* context);

    PluginHost& host_;
    std::vector<ExternalFunction> functions_;
    Variables variables_;
    CallWatcher watcher_;
    std::u16string current_file_;
};

} // namespace vell::console
