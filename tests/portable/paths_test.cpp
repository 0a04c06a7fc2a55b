// Path prefixes and the way from a path parameter to a native path.
#include "src/params/path_form.h"
#include "src/params/paths.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

#include <string>

namespace vell::params {
namespace {

constexpr Accept flags_of(std::uint32_t bits) {
    return static_cast<Accept>(bits);
}

std::string narrow(std::u16string_view text) {
    return {text.begin(), text.end()}; // the tests' paths are ASCII
}

// The stripped path, or the number of the error.
std::string stripped(std::uint32_t flags, std::u16string path) {
    const std::u16string original = path;
    const auto done = strip_prefix(flags_of(flags), path);
    if (done)
        return narrow(path);
    EXPECT_EQ(path, original);
    return std::to_string(number(done.error()));
}

std::string told(const Result<NativePath>& path) {
    return path ? narrow(path->wide) : std::to_string(number(path.error()));
}

std::string resolved(std::uint32_t flags, const std::u16string& path, const PathUse& use = {}) {
    return told(resolve(flags_of(flags), path, use));
}

TEST(Paths, TheKindIsToldByThePrefixAtTheStart) {
    for (const auto& row : test::wide_table("path_kinds.txt", 2))
        EXPECT_EQ(std::to_string(static_cast<int>(classify(row[0]))), narrow(row[1]))
            << narrow(row[0]);
}

TEST(Paths, OnlyAcceptedPrefixesAreRemoved) {
    for (const auto& row : test::wide_table("path_prefixes.txt", 3)) {
        const auto flags = static_cast<std::uint32_t>(std::stoul(narrow(row[0]), nullptr, 16));
        EXPECT_EQ(stripped(flags, row[1]), narrow(row[2])) << narrow(row[1]) << ' ' << flags;
    }
}

TEST(Paths, WhatIsNoPathIsRefused) {
    const std::u16string zero(1, u'\0');
    for (const std::uint32_t flags : {0U, 0x333U, 0x1000333U}) {
        EXPECT_EQ(resolved(flags, u""), "-50");
        EXPECT_EQ(resolved(flags, u"$$"), "-4299");
        EXPECT_EQ(resolved(flags, u"$"), "$");
        EXPECT_EQ(resolved(flags, u"C:\\$$"), "C:\\$$");
        EXPECT_EQ(resolved(flags, u"C:\\a" + zero + u".txt"), "-37");
        EXPECT_EQ(resolved(flags, u"", {.as_folder = true}), "-50");
    }
    EXPECT_EQ(resolved(0x333, u"/" + std::u16string(32'767, u'a')).size(), 32'767u);
    EXPECT_EQ(resolved(0x333, u"/" + std::u16string(32'768, u'a')), "206");
    // What stripping leaves counts.
    EXPECT_EQ(resolved(0x333, u"filewin:/"), "-50");
    EXPECT_EQ(resolved(0x333, u"/", {.as_folder = true}), "-50");
    EXPECT_EQ(resolved(0x333, u"/$$-43"), "-4299");
    EXPECT_EQ(resolved(0x333, u"$$-43\rb"), "-4254");
}

TEST(Paths, SeparatorsStayAndAFolderEndsWithABackslash) {
    EXPECT_EQ(resolved(0x333, u"filewin:/C:/data/a.txt"), "C:/data/a.txt");
    const PathUse folder{.as_folder = true};
    EXPECT_EQ(resolved(0x333, u"C:\\data", folder), "C:\\data\\");
    EXPECT_EQ(resolved(0x333, u"C:\\data\\", folder), "C:\\data\\");
    EXPECT_EQ(resolved(0x333, u"filewin:/C:/data/", folder), "C:/data/\\");
}

TEST(Paths, ADriveAloneIsItsRoot) {
    for (const char16_t* drive : {u"c:", u"filewin:/c:", u"/c:", u"imagewin:/c:"}) {
        EXPECT_EQ(resolved(0x333, drive), "c:\\");
        EXPECT_EQ(resolved(0x333, drive, {.as_folder = true}), "c:\\");
    }
    for (const char16_t* other : {u"c:a", u"c:.", u"1:", u"c:/"})
        EXPECT_EQ(resolved(0x333, other), narrow(other));
}

TEST(Paths, TheNarrowPathIsMadeOnRequestFromTheFinishedWideOne) {
    EXPECT_FALSE(resolve(Accept::Paths, u"a")->narrow.has_value());
    int calls = 0;
    const PathUse use{.as_folder = true, .narrow = [&calls](std::u16string_view text) {
                          ++calls;
                          return Result<std::string>("<" + narrow(text) + ">");
                      }};
    const auto native = resolve(Accept::Paths, u"filewin:/C:\\a", use);
    ASSERT_TRUE(native);
    EXPECT_EQ(native->narrow, "<C:\\a\\>");
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(resolved(0x333, u"$$-1", use), "-4299");
    EXPECT_EQ(calls, 1);

    const PathUse failing{.narrow = [](std::u16string_view) -> Result<std::string> {
        return Failure{ErrorCode::OutOfMemory};
    }};
    EXPECT_EQ(resolved(0x333, u"a", failing), "-108");
}

TEST(Paths, ANewItemMustNotExist) {
    const auto resolved_new = [](const std::u16string& path) {
        return told(resolve_new(Accept::Paths, path, {}, [](const NativePath& candidate) {
            EXPECT_FALSE(candidate.wide.empty() || candidate.wide.starts_with(u"$$"));
            return candidate.wide == u"C:/taken";
        }));
    };
    EXPECT_EQ(resolved_new(u"filewin:/C:/free"), "C:/free");
    EXPECT_EQ(resolved_new(u"filewin:/C:/taken"), "-48");
    EXPECT_EQ(resolved_new(u""), "-50");
}

TEST(Paths, HostFormsOfDrivesComeBackAsTheSamePath) {
    constexpr std::tuple<const char16_t*, const char*, const char*> cases[] = {
        {u"C:\\a b\\c.txt", "filewin:/C:/a b/c.txt", "C:/a b/c.txt"},
        {u"C:\\", "filewin:/C:/", "C:/"},
        {u"\\\\server\\share\\a", "file://server/share/a", "file://server/share/a"},
        {u"\\\\?\\C:\\a", "filewin:/C:/a", "C:/a"},
        {u"\\\\?\\UNC\\server\\share\\", "file://server/share/", "file://server/share/"},
    };
    const SwitchSet wanted("-Files -filemakerpathformat");
    for (const auto& [native, form, back] : cases) {
        const std::u16string host = path_result(wanted, native);
        EXPECT_EQ(narrow(host), form);
        EXPECT_EQ(resolved(0x1000333, host), back);
        const bool is_share = std::string_view(form).starts_with("file:");
        EXPECT_EQ(resolved(static_cast<std::uint32_t>(Accept::HostForms), host),
                  is_share ? form + 5 : back);
        EXPECT_EQ(path_result(SwitchSet("-Files"), native), native);
    }
}

} // namespace
} // namespace vell::params
