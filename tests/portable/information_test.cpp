// Attributes, types, sizes and names, over properties in memory.
#include "src/files/information/attributes.h"
#include "src/files/information/information.h"
#include "src/files/paths/path_to.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using test::answer_of;
using test::FakeCall;
using test::in_no_system;

// One item, "item"; every operation can be made to fail.
class OneItem : public test::FakeSystem {
  public:
    explicit OneItem(std::uint32_t attributes) { add(u"item").attributes = attributes; }
    std::uint32_t value() { return find(u"item")->attributes; }

    int changes = 0;
    ErrorCode reading = ErrorCode::Ok;
    ErrorCode writing = ErrorCode::Ok;
    Result<bool> unused = true;

    Result<std::uint32_t> attributes(const NativePath& path) override {
        if (reading != ErrorCode::Ok)
            return Failure{reading};
        return FakeSystem::attributes(path);
    }
    Result<void> set_attributes(const NativePath& path, std::uint32_t attributes) override {
        if (writing != ErrorCode::Ok)
            return Failure{writing};
        ++changes;
        return FakeSystem::set_attributes(path, attributes);
    }
    Result<bool> is_unused(const NativePath& path, Permission) override {
        if (path.wide != u"item")
            return Failure{ErrorCode::FolderNotFound};
        return unused;
    }
};

std::string get(OneItem& item, std::vector<std::u16string> parameters) {
    return answer_of(get_file_attribute, item, std::move(parameters));
}

std::string set(OneItem& item, std::vector<std::u16string> parameters) {
    return answer_of(set_file_attribute, item, std::move(parameters));
}

constexpr std::uint32_t other_bits = 0x2010; // a folder that is not indexed

TEST(FileAttribute, ExactlyOneSwitchAsks) {
    OneItem others(other_bits | 0x22);
    const char16_t* const names[] = {u"-lockAttr",          u"-archiveAttr",      u"-hiddenAttr",
                                     u"-labelNumAttr",      u"-IsFree",           u"-iCloudStatus",
                                     u"-PackageFolderAttr", u"-findercommentAttr"};
    for (const char16_t* first : names)
        for (const char16_t* second : names)
            if (first != second) {
                EXPECT_EQ(get(others, {std::u16string(first) + second, u"item"}), "$$-50");
            }
}

TEST(FileAttribute, OnlyBeingInUseMakesAFileNotFree) {
    OneItem item(0);
    const auto can_be_changed = [&] {
        return answer_of(is_free, item, {u"", u"item"});
    };
    EXPECT_EQ(get(item, {u"-IsFree", u"item"}), "1");
    EXPECT_EQ(get(item, {u"-IsFree", u"none"}), "$$-43"); // its folder is missing, too
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
    const auto bits = [](const std::string& letters) {
        std::uint32_t value = other_bits;
        for (const char letter : letters)
            value |= letter == 'r' ? 0x1 : letter == 'h' ? 0x2 : 0x20;
        return value;
    };
    for (const auto& row : test::table("attribute_switches.txt", 3))
        for (const auto& [before, after] :
             {std::pair(bits(""), bits(row[1])), {bits("rha"), bits(row[2])}}) {
            OneItem item(before);
            EXPECT_EQ(set(item, {utf16_from_utf8(row[0]), u"item", u"TEXT", u"a comment"}), "0");
            EXPECT_EQ(item.value(), after) << row[0];
            EXPECT_EQ(item.changes, before != after) << row[0];
        }
}

TEST(SetFileAttribute, ReportsFailures) {
    OneItem item(0);
    item.writing = ErrorCode::Busy;
    EXPECT_EQ(set(item, {u"-lock", u"item"}), "$$-47");
    EXPECT_EQ(set(item, {u"-unlock", u"item"}), "0"); // nothing to write
    item.reading = static_cast<ErrorCode>(21);
    EXPECT_EQ(set(item, {u"-unlock", u"item"}), "$$21");
    EXPECT_EQ(item.value(), 0u);
}

TEST(SetFileAttribute, AStepSaysItByItsLists) {
    const auto step = [](std::uint32_t before, std::vector<std::int32_t> lists) {
        OneItem item(before);
        FakeCall call({u"", u"item"});
        for (std::size_t i = 0; i < lists.size(); ++i)
            call.set_step_option(i + 2, lists[i]);
        const std::string answer = answer_of(call, set_file_attribute(call, item));
        return answer + " " + std::to_string(item.value());
    };
    EXPECT_EQ(step(0x23, {0, 0, 0, 0}), "0 35");
    EXPECT_EQ(step(0x22, {2, 1, 0, 3}), "0 33"); // locked, shown, archive bit as it was
    EXPECT_EQ(step(0x01, {1, 2, 2, 0}), "0 34");
    EXPECT_EQ(step(0x23, {0, 0, 1, 0}), "0 3");
    EXPECT_EQ(step(0x02, {2}), "0 3"); // lists that are not given change nothing
    EXPECT_EQ(step(0x02, {0, 3, 0, 0}), "$$-50 2");
    EXPECT_EQ(step(0x02, {-1, 0, 0, 0}), "$$-50 2");
}

TEST(Information, SizesAreExact) {
    test::FakeSystem system;
    system.add(u"item", test::FakeItem{.length = (std::uint64_t{1} << 53) + 1});
    // No binary fraction of double length has it.
    EXPECT_EQ(answer_of(get_file_size, system, {u"", u"item"}), "9007199254740993");
}

TEST(Information, NamesAndExtensionsAreThoseOfTheLastComponent) {
    for (const auto& row : test::table("file_names.txt", 3)) {
        const std::vector<std::u16string> parameters{u"", utf16_from_utf8(row[0])};
        EXPECT_EQ(answer_of(parameters, in_no_system(get_file_name)), row[1]) << row[0];
        EXPECT_EQ(answer_of(parameters, in_no_system(get_extension)), row[2]) << row[0];
    }
}

class HostPlace : public test::FakeSystem {
  public:
    Result<std::u16string> program_path() override {
        return std::u16string(u"C:\\Host\\Host Pro.exe");
    }
};

TEST(PathTo, FindsTheProgramAndTheSolution) {
    HostPlace system;
    for (const auto& row : test::wide_table("places.txt", 3)) {
        FakeCall call({row[0]});
        call.set_calculation(u"Get ( FilePath )", row[1]);
        EXPECT_EQ(answer_of(call, get_path_to(call, system)), utf8_from_utf16(row[2]));
    }
}

} // namespace
} // namespace vell::files
