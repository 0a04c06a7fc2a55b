// How the fuzz targets read their inputs and report what does not hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

// A finding: libFuzzer keeps the input of a program that aborts.
#define FUZZ_CHECK(condition)                                                                      \
    ((condition) ? void() : vell::fuzz::report(#condition, __FILE__, __LINE__))

namespace vell::fuzz {

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
