// Metadata written from one file in memory to another.
#pragma once

#include "src/metadata/set_metadata.h"
#include "tests/portable/fake_call.h"
#include "tests/portable/fake_system.h"
#include "tests/portable/tagged_value.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>

namespace vell::test {

inline const std::u16string source = u"C:\\a.bin";
inline const std::u16string destination = u"C:\\b.bin";

// What stands around a packet of XMP that is written.
inline const std::string packet_begin =
    "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n";
inline const std::string packet_end = "<?xpacket end=\"w\"?>";

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

// Whatever fails: the old contents of what is written, the new ones or the temporary copy are
// there, and all other files. The answer is the new contents.
inline std::string written_whatever_fails(const std::map<std::u16string, std::string>& files_before,
                                          const std::u16string& target, std::string_view switches,
                                          std::string_view text) {
    const std::u16string path = target.empty() ? source : target;
    FakeSystem files;
    for (const auto& [name, bytes] : files_before)
        files.add(name, bytes);
    EXPECT_EQ(set(files, target, switches, text), 0);
    EXPECT_EQ(files.contents().size(), files_before.size() + !files_before.contains(path));
    EXPECT_GT(files.operations(), 10);
    const std::string expected = files.at(path);
    for (int operation = 1; operation <= files.operations(); ++operation) {
        SCOPED_TRACE(operation);
        FakeSystem failing;
        for (const auto& [name, bytes] : files_before)
            failing.add(name, bytes);
        failing.fail(operation, ErrorCode::DiskError);
        EXPECT_EQ(set(failing, target, switches, text), -80);
        EXPECT_EQ(failing.open_files(), 0);
        for (const auto& [name, bytes] : files_before)
            if (name == path)
                EXPECT_TRUE(failing.has_contents(bytes) || failing.has_contents(expected));
            else
                EXPECT_EQ(failing.at(name), bytes);
    }
    return expected;
}

} // namespace vell::test
