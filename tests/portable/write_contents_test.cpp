// Functions that write the contents of files, over files in memory that fail wherever they can.
#include "src/files/contents/edit_contents.h"
#include "src/files/contents/export_to_file.h"
#include "src/files/contents/write_contents.h"
#include "src/files/contents/write_turn.h"
#include "src/files/paths/defaults.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/references.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace vell::files {
namespace {

using namespace std::string_literals;
using test::FakeCall;
using test::FakeSystem;

using Function = params::Body;
constexpr Function set_file = set_contents_of_file;
constexpr Function append_file = append_to_file;
constexpr Function insert = insert_contents;
constexpr Function replace = substitute;
constexpr Function export_file = export_to_file;

constexpr std::string_view container("a\0b\xFF", 4);

// A call whose source is a container.
class ContainerCall : public FakeCall {
  public:
    using FakeCall::FakeCall;
    ErrorCode end = ErrorCode::Ok;
    bool throws = false;

    bool is_container(std::size_t index) override { return index == 1; }
    // In two pieces, with the failure between them.
    Result<void> read_container(std::size_t, const params::ByteSink& sink) override {
        VELL_TRY(sink(container.substr(0, 2)));
        if (throws)
            throw std::bad_alloc();
        if (end != ErrorCode::Ok)
            return Failure{end};
        return sink(container.substr(2));
    }
};

std::string run(Function function, FakeSystem& files, FakeCall& call) {
    const std::string answer = answer_of(call, function(call, files));
    EXPECT_EQ(files.open_files(), 0);
    return answer;
}

std::string run(Function function, FakeSystem& files, std::vector<std::u16string> parameters) {
    FakeCall call(std::move(parameters));
    return run(function, files, call);
}

TEST(WriteContents, TheDefaultFileServesUntilItIsReplaced) {
    FakeSystem files;
    files.add(u"f", "old");
    const auto set_default = [](std::u16string path) {
        FakeSystem none;
        return run(set_default_file, none, {u"", std::move(path)});
    };
    defaults().release_file();
    EXPECT_EQ(run(set_contents, files, {u"", u"text"}), "$$-50");
    EXPECT_EQ(set_default(u"filewin:/f"), "0");
    EXPECT_EQ(run(set_contents, files, {u"", u"text"}), "0");
    EXPECT_EQ(run(append_contents, files, {u"-CRtoCRLF", u"\r"}), "0");
    EXPECT_EQ(files.at(u"f"), "text\r\n");
    EXPECT_EQ(set_default(u"missing"), "0");
    EXPECT_EQ(run(append_contents, files, {u"", u"text"}), "$$-43");
    // A path that is refused leaves no default at all.
    EXPECT_EQ(set_default(u"$$-43"), "$$-4299");
    EXPECT_EQ(run(set_contents, files, {u"", u"text"}), "$$-50");

    FakeCall type({u"", std::u16string(2'001, u'x')});
    EXPECT_EQ(run(set_default_type, files, type), "0");
    EXPECT_EQ(default_file_types().size(), 2'000U);
    defaults().set_type(u"");
}

// Matches on both sides of block ends, and more output than fits a block.
TEST(SubstituteInFile, BlocksOfTheFileDoNotShow) {
    const auto substituted = [](const std::string& contents, const std::u16string& search,
                                const std::u16string& replacement) {
        FakeSystem files;
        files.add(u"f", contents);
        EXPECT_EQ(run(replace, files, {u"", u"f", u"", search, replacement}), "0");
        return files.at(u"f");
    };
    std::string contents;
    while (contents.size() < 700'000)
        contents += "needle" + std::string(contents.size() % 97, 'e') + "needl";
    for (const char16_t* replacement : {u"", u"N", u"a longer text than the one it replaces"})
        EXPECT_EQ(substituted(contents, u"needle", replacement),
                  reference::substitute(contents, "needle", utf8_from_utf16(replacement), false));
    EXPECT_EQ(substituted("a-b-c", u"-", std::u16string(300'000, u'r')),
              'a' + std::string(300'000, 'r') + 'b' + std::string(300'000, 'r') + 'c');
}

TEST(InsertContents, FilesBeyondFourGibibytesAreCopiedWhole) {
    constexpr std::uint64_t length = (4ULL << 30) + 200'000;
    FakeSystem files;
    files.add(u"f", test::FakeItem{.length = length});
    std::uint64_t written = 0;
    files.on_write = [&](std::uint64_t position, std::string_view bytes) {
        EXPECT_EQ(position, written);
        EXPECT_EQ(bytes == "!", position == 2'147'483'647);
        written += bytes.size();
    };
    EXPECT_EQ(run(insert, files, {u"", u"f", u"n", u"!", u"2147483647"}), "0");
    EXPECT_EQ(written, length + 1);
    // A number that the host does not tell exactly might mean any place in so long a file.
    EXPECT_EQ(run(insert, files, {u"", u"f", u"m", u"!", u"4294967296"}), "$$-4241");
}

TEST(ExportToFile, WritesContainers) {
    FakeSystem files;
    const auto export_container = [&](const char16_t* switches, ErrorCode end) {
        ContainerCall call({switches, u"", u"C:\\f"});
        call.end = end;
        return run(export_file, files, call);
    };
    EXPECT_EQ(export_container(u"", ErrorCode::CompressedDataDamaged), "$$-4296");
    EXPECT_TRUE(files.contents().empty());
    EXPECT_EQ(export_container(u"", ErrorCode::Ok), "0");
    EXPECT_EQ(files.at(u"C:\\f"), container);
    EXPECT_EQ(export_container(u"-OverwriteExisting", ErrorCode::NotFound), "$$-43");
    ContainerCall failing({u"-OverwriteExisting", u"", u"C:\\f"});
    failing.throws = true;
    EXPECT_THROW(run(export_file, files, failing), std::bad_alloc);
    EXPECT_EQ(files.open_files(), 0);
    EXPECT_EQ(files.contents(), (FakeSystem::Contents{{u"C:\\f", std::string(container)}}));
}

TEST(WriteTurn, OneWriterAtATime) {
    FakeSystem files;
    files.add(u"C:\\f", "old");
    {
        const auto turn = WriteTurn::take({u"c:/F. ", std::nullopt});
        ASSERT_TRUE(turn);
        for (const auto& [function, parameters] :
             {std::pair{set_file, std::vector<std::u16string>{u"", u"C:\\f", u"x"}},
              {append_file, {u"", u"C:\\f", u"x"}},
              {insert, {u"", u"C:\\f", u"", u"x"}},
              {replace, {u"", u"C:\\f", u"", u"o", u"x"}},
              {export_file, {u"-OverwriteExisting", u"x", u"C:\\f"}}})
            EXPECT_EQ(run(function, files, parameters), "$$-47");
        EXPECT_EQ(files.at(u"C:\\f"), "old");
    }
    EXPECT_EQ(run(set_file, files, {u"", u"C:\\f", u"x"}), "0");
}

// One run of a function for each operation that it makes, failing there; gives their number.
struct Scene {
    const char* name;
    Function function;
    std::vector<std::u16string> parameters;
    std::string old_contents;
    std::string new_contents;
};

constexpr auto disk_full = static_cast<ErrorCode>(112); // one of the system's own

int fail_everywhere(const Scene& scene, const std::u16string& target,
                    void (*check)(const Scene&, FakeSystem&, const FakeCall&)) {
    for (int failing = 1;; ++failing) {
        SCOPED_TRACE(std::string(scene.name) + ", operation " + std::to_string(failing));
        FakeSystem files;
        files.add(target, scene.old_contents);
        files.fail(failing, disk_full);
        FakeCall call(scene.parameters);
        const std::string result = run(scene.function, files, call);
        if (files.operations() < failing) {
            EXPECT_EQ(result, "0");
            EXPECT_EQ(files.at(target), scene.new_contents);
            EXPECT_EQ(files.contents().size(), 1U);
            EXPECT_TRUE(call.notes().empty());
            return failing - 1;
        }
        EXPECT_EQ(result, "$$112");
        check(scene, files, call);
    }
}

TEST(InPlace, NoFailureLosesTheContents) {
    const auto between = [](const char* text) {
        return std::string(300'000, '-') + text + std::string(300'000, '+');
    };
    const std::string old = between("old");
    const Scene scenes[] = {
        {"insert", insert, {u"", u"f", u"", u"new", u"300000"}, old, between("newold")},
        {"substitute", replace, {u"", u"f", u"", u"old", u"new"}, old, between("new")},
    };
    for (const Scene& scene : scenes) {
        const int operations = fail_everywhere(
            scene, u"f", [](const Scene& of, FakeSystem& files, const FakeCall& call) {
                EXPECT_TRUE(files.has_contents(of.old_contents) ||
                            files.has_contents(of.new_contents));
                // Where the file is not the old one any more, the copy is, and it is named.
                if (files.at(u"f") == of.old_contents)
                    return;
                EXPECT_EQ(files.at(u"T:\\VELLTEMP{0}.tmp"), of.old_contents);
                EXPECT_EQ(call.notes(), std::vector<std::string>{
                                            "The temporary copy is left at T:\\VELLTEMP{0}.tmp"});
            });
        EXPECT_GE(operations, 14);
    }
}

// What a file of "old contents" holds after a failure of each operation, once or for good, in
// order. What is longer than it fails while it is whole; then, and for a shorter text, a device
// that ends in the midst of the writing leaves the old contents behind half of the new ones.
TEST(WriteContents, AFailureShowsBeforeOldContentsAreReplaced) {
    const std::string old = "old contents";
    const struct {
        Function function;
        const char16_t* text;
        std::vector<std::string> once;
        std::vector<std::string> for_good;
    } cases[] = {
        // open, size; seek, write and cut behind the old contents; seek, write, close
        {set_file,
         u"0123456789abcdefgh",
         {old, old, old, old, old, old, "012345ntents", "0123456789abcdefgh"},
         {old, old, old, old + "cde", old + "cdefgh", old + "cdefgh", "012345ntentscdefgh",
          "0123456789abcdefgh"}},
        // open, size, seek, write, cut, close
        {set_file,
         u"newer",
         {old, old, old, "ned contents", "newerontents", "newer"},
         {old, old, old, "ned contents", "newerontents", "newer"}},
        {set_file, u"", {old, old, old, old, old, ""}, {old, old, old, old, old, ""}},
        {append_file,
         u", more",
         {old, old, old, old, old, old + ", more"},
         {old, old, old, old + ", m", old + ", more", old + ", more"}},
    };
    for (const auto& [function, text, once, for_good] : cases)
        for (const auto* expected : {&once, &for_good})
            for (std::size_t i = 0; i <= expected->size(); ++i) {
                SCOPED_TRACE(utf8_from_utf16(text) + ' ' + std::to_string(i));
                FakeSystem files;
                files.add(u"f", old);
                const auto failing = static_cast<int>(i) + 1;
                expected == &once ? files.fail(failing, disk_full) : files.die(failing, disk_full);
                const bool done = i == expected->size();
                EXPECT_EQ(run(function, files, {u"", u"f", text}), done ? "0" : "$$112");
                if (!done) {
                    EXPECT_EQ(files.at(u"f"), (*expected)[i]);
                }
                EXPECT_EQ(files.contents().size(), 1U); // no copy of anything
            }
}

TEST(InPlace, ANewDestinationIsWholeOrNotThere) {
    for (const auto& [function, parameters] :
         {std::pair{insert, std::vector<std::u16string>{u"", u"source", u"f", u"new", u"1"}},
          {replace, {u"", u"source", u"f", u"o", u"x"}},
          {export_file, {u"", u"text", u"f"}}}) {
        bool done = false;
        for (int failing = 1; !done; ++failing) {
            SCOPED_TRACE(failing);
            FakeSystem files;
            files.add(u"source", "old");
            files.fail(failing, disk_full);
            done = run(function, files, parameters) == "0";
            EXPECT_EQ(files.contents().size(), done ? 2U : 1U);
            EXPECT_EQ(files.at(u"source"), "old");
        }
    }
}

TEST(ExportToFile, NoFailureLosesTheOldTarget) {
    const Scene scene{
        "export", export_file, {u"-OverwriteExisting", u"new", u"f"}, "old contents", "new"};
    const int operations =
        fail_everywhere(scene, u"f", [](const Scene& of, FakeSystem& files, const FakeCall&) {
            EXPECT_EQ(files.at(u"f"), of.old_contents);
            EXPECT_EQ(files.contents().size(), 1U);
        });
    // open, close, and then name, create, open, write, close, replace
    EXPECT_EQ(operations, 8);
}

TEST(ExportToFile, ReplacesContentsAndNothingElse) {
    const auto export_new = [](FakeSystem& files) {
        FakeCall call({u"-OverwriteExisting", u"new", u"f"});
        const std::string result = run(export_file, files, call);
        return result + (call.notes().empty() ? "" : " " + call.notes().front());
    };
    FakeSystem files;
    files.add(u"f", "old").property = "for few";
    EXPECT_EQ(export_new(files), "0");
    EXPECT_EQ(files.at(u"f"), "new");
    EXPECT_EQ(files.find(u"f")->property, "for few");
    files.find(u"f")->attributes |= bit(Attribute::ReadOnly);
    EXPECT_EQ(export_new(files), "$$-47");
    EXPECT_EQ(files.at(u"f"), "new");
    EXPECT_EQ(files.contents().size(), 1U);
    // A system that removes the old file and then fails leaves at least the new one.
    FakeSystem losing;
    losing.add(u"f", "old");
    losing.replacing_loses_target = true;
    losing.fail(8, disk_full);
    EXPECT_EQ(export_new(losing), "$$112 The new contents are left at VELLTEMP{0}.tmp");
    EXPECT_EQ(losing.at(u"VELLTEMP{0}.tmp"), "new");
}

} // namespace
} // namespace vell::files
