// Attributes, types, sizes and names, over properties in memory.
#include "src/files/information/attributes.h"
#include "src/files/information/information.h"
#include "src/files/paths/path_to.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/fake_system.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using params::Call;
using testing::answer_of;
using testing::FakeCall;
using testing::in_no_system;

// One item, "item"; every operation can be made to fail.
class OneItem : public testing::FakeSystem {
  public:
    explicit OneItem(std::uint32_t attributes) : value(attributes) {}

    std::uint32_t value;
    int changes = 0;
    ErrorCode reading = ErrorCode::Ok;
    ErrorCode writing = ErrorCode::Ok;
    Result<bool> unused = true;

    Result<std::uint32_t> attributes(const NativePath& path) override {
        if (path.wide != u"item" && !path.wide.starts_with(u"item."))
            return Failure{ErrorCode::NotFound};
        if (reading != ErrorCode::Ok)
            return Failure{reading};
        return value;
    }
    Result<void> set_attributes(const NativePath&, std::uint32_t attributes) override {
        if (writing != ErrorCode::Ok)
            return Failure{writing};
        value = attributes;
        ++changes;
        return {};
    }
    Result<std::uint64_t> size(const NativePath&) override { return (std::uint64_t{1} << 53) + 1; }
    Result<bool> is_unused(const NativePath& path, Permission) override {
        if (path.wide != u"item")
            return Failure{ErrorCode::FolderNotFound};
        return unused;
    }
};

std::string get(OneItem& item, std::vector<std::u16string> parameters) {
    return answer_of(std::move(parameters),
                     [&](Call& call) { return get_file_attribute(call, item); });
}

std::string set(OneItem& item, std::vector<std::u16string> parameters) {
    return answer_of(std::move(parameters),
                     [&](Call& call) { return set_file_attribute(call, item); });
}

constexpr std::uint32_t other_bits = 0x2010; // a folder that is not indexed

TEST(FileAttribute, ExactlyOneSwitchAsks) {
    OneItem locked(other_bits | 0x1);
    EXPECT_EQ(get(locked, {u"-lockAttr", u"item"}), "1");
    EXPECT_EQ(get(locked, {u"-HIDDENATTR", u"item"}), "0");
    OneItem others(other_bits | 0x22);
    EXPECT_EQ(get(others, {u"x-hiddenAttr,", u"item"}), "1");
    EXPECT_EQ(get(others, {u"-archiveAttr", u"item"}), "1");
    for (const char16_t* asks_nothing : {u"", u"-lock", u"-hidden", u"lockAttr", u"-lock Attr"})
        EXPECT_EQ(get(others, {asks_nothing, u"item"}), "$$-50") << utf8_from_utf16(asks_nothing);

    const char16_t* const names[] = {u"-lockAttr",          u"-archiveAttr",      u"-hiddenAttr",
                                     u"-labelNumAttr",      u"-IsFree",           u"-iCloudStatus",
                                     u"-PackageFolderAttr", u"-findercommentAttr"};
    for (const char16_t* first : names)
        for (const char16_t* second : names)
            if (first != second) {
                EXPECT_EQ(get(others, {std::u16string(first) + second, u"item"}), "$$-50");
            }
}

TEST(FileAttribute, WhatThePlatformLacksIsFixed) {
    OneItem item(0xFFFF'FFFF);
    for (const char16_t* path : {u"item", u"none"}) {
        EXPECT_EQ(get(item, {u"-labelNumAttr", path}), "0");
        EXPECT_EQ(get(item, {u"-PackageFolderAttr", path}), "0");
        EXPECT_EQ(get(item, {u"-findercommentAttr", path}), "");
        EXPECT_EQ(get(item, {u"-iCloudStatus", path}), "$$-4221");
    }
    EXPECT_EQ(get(item, {u"-labelNumAttr"}), "$$-50");
    EXPECT_EQ(get(item, {u"-IsFree", u"none"}), "$$-43");
}

TEST(FileAttribute, OnlyBeingInUseMakesAFileNotFree) {
    OneItem item(0);
    const auto can_be_changed = [&] {
        return answer_of({u"", u"item"}, [&](Call& call) { return is_free(call, item); });
    };
    EXPECT_EQ(get(item, {u"-IsFree", u"item"}), "1");
    EXPECT_EQ(can_be_changed(), "1");
    item.unused = false;
    EXPECT_EQ(get(item, {u"-IsFree", u"item"}), "0");
    EXPECT_EQ(can_be_changed(), "0");
    item.unused = Failure{ErrorCode::Busy}; // access denied
    EXPECT_EQ(get(item, {u"-IsFree", u"item"}), "$$-47");
    EXPECT_EQ(can_be_changed(), "0");
    item.unused = Failure{static_cast<ErrorCode>(21)}; // the drive is not ready
    EXPECT_EQ(get(item, {u"-IsFree", u"item"}), "$$21");
    EXPECT_EQ(can_be_changed(), "$$21");
}

TEST(SetFileAttribute, SwitchesSetAndClearBitsAndLeaveTheOthers) {
    constexpr std::uint32_t none = other_bits;
    constexpr std::uint32_t all = other_bits | 0x23;
    const struct {
        const char16_t* switches;
        std::uint32_t from_none; // the attributes that none and all become
        std::uint32_t from_all;
    } cases[] = {
        {u"", none, all},
        {u"-lock", none | 0x1, all},
        {u"-unlock", none, all & ~0x1u},
        {u"-hide", none | 0x2, all},
        {u"-unhide", none, all & ~0x2u},
        {u"-SetArchive", none | 0x20, all},
        {u"-ResetArchive", none, all & ~0x20u},
        {u"-LOCK-hide -resetarchive", none | 0x3, all & ~0x20u},
        {u"-lockAttr", none | 0x1, all},     // a name inside a longer word counts
        {u"lock unhide Archive", none, all}, // without its "-" it is none
        {u"-creator -filetype -findercomment -labelNum -iCloudStartDownloadingItem "
         u"-iCloudRemoveLocalCopy",
         none, all},
    };
    for (const auto& c : cases)
        for (const auto& [before, after] :
             {std::pair{none, c.from_none}, std::pair{all, c.from_all}}) {
            OneItem item(before);
            EXPECT_EQ(set(item, {c.switches, u"item", u"TEXT", u"a comment"}), "0");
            EXPECT_EQ(item.value, after) << utf8_from_utf16(c.switches);
            EXPECT_EQ(item.changes, before != after) << utf8_from_utf16(c.switches);
        }
}

TEST(SetFileAttribute, RefusesContradictionsAndReportsFailures) {
    OneItem item(0);
    EXPECT_EQ(set(item, {u"-lock -unlock", u"none"}), "$$-50");
    EXPECT_EQ(set(item, {u"-unhide-hide", u"item"}), "$$-50");
    EXPECT_EQ(set(item, {u"-lock -SetArchive -ResetArchive", u"item"}), "$$-50");
    EXPECT_EQ(set(item, {u"-lock"}), "$$-50");
    EXPECT_EQ(set(item, {u"-lock", u"none"}), "$$-43");
    EXPECT_EQ(set(item, {u"", u"none"}), "$$-43");
    item.writing = ErrorCode::Busy;
    EXPECT_EQ(set(item, {u"-lock", u"item"}), "$$-47");
    EXPECT_EQ(set(item, {u"-unlock", u"item"}), "0"); // nothing to write
    item.reading = static_cast<ErrorCode>(21);
    EXPECT_EQ(set(item, {u"-unlock", u"item"}), "$$21");
    EXPECT_EQ(item.value, 0u);
}

TEST(SetFileAttribute, AStepSaysItByItsLists) {
    const auto step = [](std::uint32_t before, std::vector<std::int32_t> lists) {
        OneItem item(before);
        FakeCall call({u"", u"item"});
        for (std::size_t i = 0; i < lists.size(); ++i)
            call.set_step_option(i + 2, lists[i]);
        const std::string answer = answer_of(call, set_file_attribute(call, item));
        return answer + " " + std::to_string(item.value);
    };
    EXPECT_EQ(step(0x23, {0, 0, 0, 0}), "0 35");
    EXPECT_EQ(step(0x22, {2, 1, 0, 3}), "0 33"); // locked, shown, archive bit as it was
    EXPECT_EQ(step(0x01, {1, 2, 2, 0}), "0 34");
    EXPECT_EQ(step(0x23, {0, 0, 1, 0}), "0 3");
    EXPECT_EQ(step(0x02, {2}), "0 3"); // lists that are not given change nothing
    EXPECT_EQ(step(0x02, {0, 3, 0, 0}), "$$-50 2");
    EXPECT_EQ(step(0x02, {-1, 0, 0, 0}), "$$-50 2");
}

TEST(Information, TheTypeOfAnItem) {
    const auto type = [](std::uint32_t attributes, std::vector<std::u16string> parameters) {
        OneItem item(attributes);
        return answer_of(std::move(parameters),
                         [&](Call& call) { return get_type_of_item(call, item); });
    };
    EXPECT_EQ(type(0x20, {u"-AddAliasInfo", u"item.lnk"}), "file (alias)");
    EXPECT_EQ(type(0x20, {u"-addisalias", u"item.x.LNK"}), "file (alias)");
    EXPECT_EQ(type(0x20, {u"-AddIsAlias", u"item.link"}), "file");
    EXPECT_EQ(type(0x10, {u"-AddIsAlias", u"item.lnk"}), "folder");
    EXPECT_EQ(type(0x10, {u"", u"item"}), "folder");
    EXPECT_EQ(type(0x40, {u"", u"item"}), "unknown");
    EXPECT_EQ(type(0x20, {u"", u"none"}), "$$-43");
    EXPECT_EQ(type(0x20, {u""}), "$$-50");
}

TEST(Information, SizesAreExact) {
    OneItem item(0);
    EXPECT_EQ(answer_of({u"", u"item"}, [&](Call& call) { return get_file_size(call, item); }),
              "9007199254740993"); // no binary fraction of double length has it
}

TEST(Information, NamesAndExtensionsAreThoseOfTheLastComponent) {
    const struct {
        const char16_t* path;
        const char* name;
        const char* extension;
    } cases[] = {
        {u"C:\\folder.d\\file.txt", "file.txt", "txt"},
        {u"filewin:/C:/folder.d/file", "file", ""},
        {u"archive.tar.GZ", "archive.tar.GZ", "GZ"},
        {u"C:\\folder.d\\", "folder.d", ""},
        {u"C:\\.hidden", ".hidden", "hidden"},
        {u"C:\\ends.", "ends.", ""},
        {u"C:\\", "", ""},
        {u"", "$$-50", "$$-50"},
        {u"$$-43", "$$-4299", "$$-4299"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(answer_of({u"", c.path}, in_no_system(get_file_name)), c.name)
            << utf8_from_utf16(c.path);
        EXPECT_EQ(answer_of({u"", c.path}, in_no_system(get_extension)), c.extension)
            << utf8_from_utf16(c.path);
    }
}

class HostPlace : public testing::FakeSystem {
  public:
    Result<std::u16string> program_path() override {
        return std::u16string(u"C:\\Host\\Host Pro.exe");
    }
};

TEST(PathTo, FindsTheProgramAndTheSolution) {
    HostPlace system;
    const struct {
        const char16_t* switches;
        const char16_t* file_path;
        const char* expected;
    } cases[] = {
        {u"currentApplication", u"", "C:\\Host\\Host Pro.exe"},
        {u"-currentappfolder", u"", "C:\\Host\\"},
        {u"currentFileName", u"file:/C:/a b/\u00FC.fmp12", "C:\\a b\\\u00FC.fmp12"},
        {u"currentFileName", u"file:///C:/x.fmp12", "C:\\x.fmp12"},
        {u"currentFileName", u"file://server/share/x.fmp12", "\\\\server\\share\\x.fmp12"},
        {u"currentFileName -FileMakerPathFormat", u"file://server/share/x.fmp12",
         "file://server/share/x.fmp12"},
        {u"currentAppFolder -FileMakerPathFormat", u"", "filewin:/C:/Host/"},
        {u"currentFileName", u"fmnet:/10.0.0.1/x.fmp12", "$$-43"},
        {u"currentFileName", u"", "$$-43"},
        {u"current", u"", "$$-50"},
    };
    for (const auto& c : cases) {
        FakeCall call({c.switches});
        call.set_calculation(u"Get ( FilePath )", c.file_path);
        EXPECT_EQ(answer_of(call, get_path_to(call, system)), c.expected);
    }
}

} // namespace
} // namespace vell::files
