// Metadata written from one file in memory to another.
#pragma once

#include "src/metadata/set_metadata.h"
#include "tests/portable/fake_call.h"
#include "tests/portable/fake_system.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace vell::test {

inline const std::u16string source = u"C:\\a.bin";
inline const std::u16string destination = u"C:\\b.bin";

// The code of a write, as from `source` to `target`.
inline std::int32_t set(FakeSystem& files, const std::u16string& target, std::string_view switches,
                        std::string_view text) {
    FakeCall call({utf16_from_utf8(switches), source, target, utf16_from_utf8(text)});
    const Result<void> done = metadata::set_metadata(call, files);
    EXPECT_EQ(call.result() == u"0", done.has_value());
    return done ? 0 : number(done.error());
}

// The file after a write that succeeds; "!" and the code otherwise.
inline std::string written(const std::string& file, std::string_view switches,
                           std::string_view text) {
    FakeSystem files;
    files.add(source, file);
    const std::int32_t code = set(files, destination, switches, text);
    EXPECT_EQ(files.at(source), file);
    EXPECT_EQ(files.contents().size(), code == 0 ? 2U : 1U);
    return code == 0 ? files.at(destination) : "!" + std::to_string(code);
}

} // namespace vell::test
