// Questions about the metadata of files, in tables.
#pragma once

#include "tests/portable/image_builder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vell::test {

struct MetadataCase {
    const char* switches;
    std::string file;
    std::string expected;
};
inline void expect_metadata(const std::vector<MetadataCase>& cases) {
    for (const auto& [switches, file, expected] : cases)
        EXPECT_EQ(metadata_of(switches, file), expected) << switches << ": " << file.substr(0, 200);
}

} // namespace vell::test
