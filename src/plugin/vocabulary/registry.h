// The plug-in's vocabulary: one row for every function and every script step. Registration,
// unregistration, dispatch and the lists that users see are all made from these rows.
#pragma once

#include "src/params/call.h"
#include "src/plugin/vocabulary/step_parameter.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace vell::plugin {

class Plugin; // src/plugin/plugin.h

// What serves a row: a body of the rooms below, or one that is about the plug-in itself.
class Body {
  public:
    using OfPlugin = Result<void> (*)(params::Call& call, Plugin& plugin);

    constexpr Body(params::Body body) : body_(body) {}
    constexpr Body(OfPlugin body) : of_plugin_(body) {}

    Result<void> run(params::Call& call, Plugin& plugin) const;
    friend bool operator==(const Body&, const Body&) = default;

  private:
    params::Body body_ = nullptr;
    OfPlugin of_plugin_ = nullptr; // otherwise
};

// Whether a call is served while the plug-in is disabled or its licence has lapsed.
enum class Served : std::uint8_t { WhenEnabled, Always };

// Rows of one group are registered in their order up to the first failure.
enum class RegistrationGroup : std::uint8_t { First, Second };

// The smallest number of parameters: one number, unless the body needs other ones than the host
// demands. A body that needs none answers any call.
struct LeastParameters {
    constexpr LeastParameters(std::int16_t number) : demanded(number), needed(number) {}
    constexpr LeastParameters(std::int16_t by_host, std::int16_t by_body)
        : demanded(by_host), needed(by_body) {}

    std::int16_t demanded; // what the host is told: it refuses a calculation with fewer
    std::int16_t needed;   // a call with fewer answers BadParameter without reaching the body
};

struct FunctionRow {
    std::int16_t id;
    LeastParameters least_parameters;
    std::int16_t max_parameters;
    std::uint32_t flags;
    std::string_view prototype;
    std::string_view description; // without the display name
    Body body;
    Served served = Served::WhenEnabled;
    RegistrationGroup group = RegistrationGroup::First;
    std::string_view search_words = {}; // older spellings, found by the host's type-ahead

    // The prototype up to its parameters.
    constexpr std::string_view name() const {
        const std::string_view name = prototype.substr(0, prototype.find('('));
        return name.substr(0, name.find(' '));
    }

    // The ID that the host knows and calls: those of the version functions are 0 and 1.
    constexpr std::int16_t registered_id() const {
        return id == 9000 || id == 9001 ? static_cast<std::int16_t>(id - 9000) : id;
    }
};

struct StepRow {
    std::int16_t id; // that of the function which it mirrors, plus 3000
    std::string_view name;
    std::string_view description;
    std::int16_t needed_parameters;            // see LeastParameters; the target counts
    std::span<const StepParameter> parameters; // the target first, where there is one
    Body body;
    Served served = Served::WhenEnabled;
};

inline constexpr std::uint32_t step_flags = 0xFF6E;

// In the order of registration.
std::span<const FunctionRow> function_rows();
std::span<const StepRow> step_rows();

// By the ID that the host calls; null for an ID that is not registered.
const FunctionRow* find_function(std::int16_t registered_id);
const StepRow* find_step(std::int16_t id);

// Texts by function or step ID, for rows that exist or not.
std::string_view function_prototype(std::int16_t id); // "VlFile__FUNCTION_NAME_NOT_SET" if unknown
std::string_view step_name(std::int16_t id);          // "VlFile_STEP_NAME_NOT_SET" if unknown

// "display name|description": the name split into words, the search words, and the description.
std::string function_description(const FunctionRow& row);
std::string step_description(const StepRow& row); // "|description"

} // namespace vell::plugin
