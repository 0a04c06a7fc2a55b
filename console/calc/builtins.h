// The functions of the calculation language itself.
#pragma once

#include "console/calc/value.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace vell::console {

// How the evaluator treats a function's arguments.
enum class BuiltinKind : std::uint8_t {
    Plain,         // all evaluated, given to `body`
    If,            // evaluated as far as needed
    Case,          // evaluated as far as needed
    Substitute,    // may be lists
    FileContainer, // Container( path )
};

struct Builtin {
    std::u16string_view name;
    std::string_view prototype;
    int min_arguments;
    int max_arguments; // -1: any number
    BuiltinKind kind = BuiltinKind::Plain;
    Value (*body)(std::span<Value> arguments) = nullptr; // for Plain; may consume its arguments
};

// Ordered by name.
std::span<const Builtin> builtins();
const Builtin* find_builtin(std::u16string_view name); // any letter case

// Replaces every occurrence, from left to right, with regard to case.
std::u16string substitute(std::u16string_view text, std::u16string_view search,
                          std::u16string_view replacement);

} // namespace vell::console
