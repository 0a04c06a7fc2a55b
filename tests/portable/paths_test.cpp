// Path prefixes and the way from a path parameter to a native path.
#include "src/params/path_form.h"
#include "src/params/paths.h"

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

std::string resolved(std::uint32_t flags, const std::u16string& path, const PathUse& use = {}) {
    const auto native = resolve(flags_of(flags), path, use);
    return native ? narrow(native->wide) : std::to_string(number(native.error()));
}

TEST(Paths, TheKindIsToldByThePrefixAtTheStart) {
    constexpr std::pair<const char16_t*, int> cases[] = {
        {u"filemac:/Disk/a", 1}, {u"filewin:/C:/a", 2}, {u"file:a", 3},    {u"imagemac:a", 4},
        {u"imagewin:a", 5},      {u"image:a", 6},       {u"moviemac:", 7}, {u"moviewin:/", 8},
        {u"movie:a", 9},         {u"size:1,2", 10},     {u"smb://a", 30},  {u"C:\\a", 0},
        {u" file:a", 0},         {u"FILE:a", 0},        {u"files:a", 0},   {u"/file:a", 0},
    };
    for (const auto& [path, kind] : cases)
        EXPECT_EQ(static_cast<int>(classify(path)), kind) << narrow(path);
}

TEST(Paths, OnlyAcceptedPrefixesAreRemoved) {
    struct {
        std::uint32_t flags;
        const char16_t* path;
        const char* expected;
    } const cases[] = {
        {0x2, u"filewin:/C:/a", "C:/a"},
        {0x2, u"filewin:C:/a", "filewin:C:/a"},
        {0x2, u"filewin://server/a", "/server/a"},
        {0x100000, u"filewin:/C:/a", "/C:/a"},
        {0x100000, u"filewin:C:/a", "C:/a"},
        {0x100002, u"filewin:C:/a", "C:/a"},
        {0x331, u"filewin:/C:/a", "filewin:/C:/a"},
        {0x4, u"file:/a", "/a"}, // one prefix a call: the slash stays
        {0x4, u"file:file:a", "file:a"},
        {0x333, u"file:a", "file:a"},
        {0x100020, u"imagewin:C:/a", "C:/a"},
        {0x313, u"imagewin:/C:/a", "imagewin:/C:/a"},
        {0x200, u"moviewin:/C:/a", "C:/a"},
        {0x133, u"moviewin:/C:/a", "moviewin:/C:/a"},
        {0xFFFFF, u"filemac:/a", "filemac:/a"},
        {0x100fff, u"image:/a", "image:/a"},
        {0x100fff, u"smb://a", "smb://a"},
        {0x1, u"/a", "a"},
        {0x1, u"/", ""},
        {0x1, u"//server/a", "//server/a"},
        {0x333, u"/filewin:/C:/a", "filewin:/C:/a"},
        {0, u"/a", "/a"},
        {0, u"filewin:/a\rb", "filewin:/a\rb"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(stripped(c.flags, c.path), c.expected) << narrow(c.path) << ' ' << c.flags;
}

TEST(Paths, EachLineLosesItsOwnPrefixWhereSeveralMayStand) {
    EXPECT_EQ(stripped(0x2, u"filewin:/a\rfilewin:/b"), "-4254");
    EXPECT_EQ(stripped(0x333, u"a\r"), "-4254");
    EXPECT_EQ(stripped(0x1000333, u"filewin:/a\rC:\\b\r/c\r\rimagewin:/d\rfilewin:e\r//f\r"),
              "a\rC:\\b\rc\r\rd\rfilewin:e\r//f\r");
    EXPECT_EQ(stripped(0x333, u"a\nb"), "a\nb"); // a line feed ends no line
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
        const auto native = resolve_new(Accept::Paths, path, {}, [](const NativePath& candidate) {
            EXPECT_FALSE(candidate.wide.empty() || candidate.wide.starts_with(u"$$"));
            return candidate.wide == u"C:/taken";
        });
        return native ? narrow(native->wide) : std::to_string(number(native.error()));
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
