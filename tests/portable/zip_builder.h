// Archives made for tests.
#pragma once

#include "src/archive/zip_writer.h"
#include "tests/portable/fake_system.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vell::test {

// One with entries of the given names, such as no writer makes; files hold their own name.
inline std::string zip_of(const std::vector<std::string>& names) {
    constexpr std::string_view refused = "\\:/";
    FakeSystem system;
    system.add(u"zip");
    archive::ZipWriter writer(*system.open(native(u"zip"), files::Permission::Write));
    for (const std::string& name : names) {
        system.add(u"data", name);
        // What the writer refuses gets into the directory afterwards.
        std::string written = name;
        for (char& c : written)
            if (const std::size_t at = refused.find(c); at != refused.npos && &c != &written.back())
                c = static_cast<char>(at + 1);
        EXPECT_TRUE(name.ends_with('/')
                        ? writer.add_folder(written, {}, {0, false})
                        : writer.add_file(system, written, native(u"data"), {0, false}));
    }
    EXPECT_TRUE(writer.finish());
    std::string bytes = system.at(u"zip");
    for (std::size_t at = bytes.find("PK\1\2"); at != std::string::npos;
         at = bytes.find("PK\1\2", at + 46))
        for (char& c :
             std::span(bytes).subspan(at + 46, static_cast<unsigned char>(bytes[at + 28])))
            if (c > 0 && static_cast<std::size_t>(c) <= refused.size())
                c = refused[static_cast<std::size_t>(c) - 1];
    return bytes;
}

} // namespace vell::test
