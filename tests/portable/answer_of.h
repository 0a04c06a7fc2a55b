// What a function answers to a call, as text.
#pragma once

#include "tests/portable/fake_call.h"
#include "tests/portable/fake_system.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace vell::test {

// The result in UTF-8 of a call that is done, or the number of its error behind "$$".
inline std::string answer_of(const FakeCall& call, const Result<void>& done) {
    EXPECT_EQ(call.result().has_value(), done.has_value());
    return done ? utf8_from_utf16(call.result().value_or(u"<no result>"))
                : "$$" + std::to_string(number(done.error()));
}
// A function that asks nothing of the system.
inline auto in_no_system(params::Body body) {
    return [body](params::Call& call) {
        FakeSystem system;
        return body(call, system);
    };
}
inline std::string answer_of(params::Body body, System& system,
                             std::vector<std::u16string> parameters) {
    FakeCall call(std::move(parameters));
    return answer_of(call, body(call, system));
}
template <typename Function>
std::string answer_of(std::vector<std::u16string> parameters, const Function& function) {
    FakeCall call(std::move(parameters));
    return answer_of(call, function(call));
}

} // namespace vell::test
