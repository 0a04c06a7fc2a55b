// What the fuzz targets have in common: how they are defined, read their inputs and report what
// does not hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

// A finding: libFuzzer keeps the input of a program that aborts.
#define FUZZ_CHECK(condition)                                                                      \
    ((condition) ? void() : vell::fuzz::report(#condition, __FILE__, __LINE__))

// Defines a target in a namespace of its own: a function of `data` and `size` that returns 0.
#define FUZZ_TARGET(name)                                                                          \
    static int run(const std::uint8_t* data, std::size_t size);                                    \
    static const vell::fuzz::Target target(#name, run);                                            \
    static int run(const std::uint8_t* data, std::size_t size)

namespace vell::fuzz {

// The targets of a program are in a list, to which each adds itself.
struct Target {
    Target(const char* its_name, int (*function)(const std::uint8_t*, std::size_t))
        : name(its_name), run(function), next(newest) {
        newest = this;
    }

    const char* name;
    int (*run)(const std::uint8_t* data, std::size_t size);
    const Target* next;

    static inline const Target* newest = nullptr;
};

[[noreturn]] inline void report(const char* condition, const char* file, int line) {
    std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
    std::abort();
}

inline std::string_view as_text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// Takes the first line off `input`; all of it when there is only one.
inline std::string_view take_line(std::string_view& input) {
    const std::size_t end = input.find('\n');
    const std::string_view line = input.substr(0, end);
    input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
    return line;
}

} // namespace vell::fuzz
