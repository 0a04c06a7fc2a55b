// The administrator's policy: what its text says, where paths lead, and the log of calls.
#include "src/base/utf8.h"
#include "src/policy/audit_file.h"
#include "src/policy/guard.h"
#include "tests/portable/strict_json.h"
#include "tests/portable/watched_system.h"

#include <gtest/gtest.h>

#include <fstream>
#include <future>
#include <iterator>
#include <regex>

namespace vell::policy {
namespace {

using test::native;

constexpr std::string_view functions[] = {"VlFile_Launch", "VlFile_Exists"};

std::string problem_of(std::string_view json) {
    const auto policy = read_policy(json, functions);
    return policy ? "" : policy.error();
}

TEST(PolicyText, SaysEverythingThatCanBeSaid) {
    const auto policy = read_policy(
        R"({"readRoots": ["C:\\Data", "d:/x/"], "writeRoots": ["\\\\server\\share"],
            "deny": ["VlFile_Launch", "DisableAllFunctions"],
            "limits": {"archiveBytes": 1, "archiveEntries": 2, "seconds": 3, "memoryBytes": 4,
                       "commandOutputBytes": 5, "endCommandChildren": true},
            "audit": {"on": false, "folder": "C:\\Logs", "fileBytes": 65536, "oldFiles": 0}})",
        functions);
    ASSERT_TRUE(policy) << policy.error();
    EXPECT_EQ(policy->read_roots, (Roots{u"C:\\Data", u"d:\\x"}));
    EXPECT_EQ(policy->write_roots, Roots{u"\\\\server\\share"});
    EXPECT_EQ(policy->denied.size(), 2u);
    EXPECT_EQ(policy->limits.archive_bytes, 1u);
    EXPECT_EQ(policy->limits.archive_entries, 2u);
    EXPECT_EQ(policy->limits.seconds, 3u);
    EXPECT_EQ(policy->limits.memory_bytes, 4u);
    EXPECT_EQ(policy->limits.command_output_bytes, 5u);
    EXPECT_TRUE(policy->ends_command_children);
    EXPECT_FALSE(policy->audit.is_on);
    EXPECT_EQ(policy->audit.folder, u"C:\\Logs");
    EXPECT_EQ(policy->audit.file_bytes, 65536u);
    EXPECT_EQ(policy->audit.old_files, 0u);
}

TEST(PolicyText, LeavesOpenWhatItDoesNotSay) {
    const auto policy = read_policy("{}", functions);
    ASSERT_TRUE(policy) << policy.error();
    EXPECT_FALSE(policy->read_roots || policy->write_roots || policy->allows_nothing);
    EXPECT_EQ(policy->limits.seconds, Limits::none);
    EXPECT_TRUE(policy->audit.is_on);
}

TEST(PolicyText, IsRefusedForEveryMistake) {
    for (const std::string_view json : {"",
                                        "{",
                                        "[]",
                                        "null",
                                        "{} {}",
                                        R"({"readroots": []})",
                                        R"({"readRoots": "C:\\"})",
                                        R"({"readRoots": [1]})",
                                        R"({"readRoots": ["Data"]})",
                                        R"({"readRoots": ["C:Data"]})",
                                        R"({"readRoots": ["\\\\?\\C:\\Data"]})",
                                        R"({"readRoots": ["\\\\server"]})",
                                        R"({"readRoots": ["C:\\Data\\.."]})",
                                        R"({"readRoots": ["C:\\a\u0000b"]})",
                                        R"({"readRoots": [], "readRoots": []})",
                                        R"({"limits": {"seconds": 1, "seconds": 2}})",
                                        R"({"deny": ["VlFile_Lunch"]})",
                                        R"({"deny": "VlFile_Launch"})",
                                        R"({"limits": {"bytes": 1}})",
                                        R"({"limits": {"archiveBytes": -1}})",
                                        R"({"limits": {"archiveBytes": 1.5}})",
                                        R"({"limits": {"seconds": 0}})",
                                        R"({"limits": {"endCommandChildren": 1}})",
                                        R"({"audit": {"fileBytes": 1}})",
                                        R"({"audit": {"oldFiles": 101}})",
                                        R"({"audit": []})",
                                        R"({"readRoots": [[[[[["C:\\"]]]]]]})",
                                        "{\"deny\": [\"\xFF\"]}"})
        EXPECT_NE(problem_of(json), "") << json;
    EXPECT_NE(problem_of(std::string(longest_policy, ' ') + "{}"), "");
    EXPECT_NE(problem_of(std::string(500'000, '[')), "");
    EXPECT_EQ(problem_of(R"({"limits": {"wrong": 1}})"),
              "\"limits\": unknown key \"wrong\" in \"limits\"");
}

// Every member that the schema has is one that the reader knows.
TEST(PolicyText, HasTheKeysOfItsSchema) {
    const std::string readme = VELL_README;
    std::ifstream file(readme.substr(0, readme.rfind('/')) + "/docs/policy.schema.json");
    const std::string schema{std::istreambuf_iterator<char>(file), {}};
    const std::set<std::string> of_schema{"properties", "$defs", "folder",   "folders",
                                          "count",      "items", "folder's", ""};
    int members = 0;
    const std::regex member(R"re("([A-Za-z$]+)": \{)re");
    for (std::sregex_iterator at(schema.begin(), schema.end(), member), end; at != end; ++at) {
        const std::string name = (*at)[1];
        if (name != "folder" && of_schema.contains(name))
            continue;
        const bool is_known =
            !problem_of("{\"" + name + "\": null}").starts_with("unknown") ||
            problem_of("{\"limits\": {\"" + name + "\": null}}").find("unknown") ==
                std::string::npos ||
            problem_of("{\"audit\": {\"" + name + "\": null}}").find("unknown") ==
                std::string::npos;
        EXPECT_TRUE(is_known) << name;
        ++members;
    }
    EXPECT_GE(members, 15);
}

class GuardedPaths : public ::testing::Test {
  protected:
    GuardedPaths() {
        system.add(u"C:\\in\\a.txt", "text");
        system.add(u"C:\\in\\folder\\c.txt", "more");
        system.add(u"C:\\out\\b.txt", "secret");
        system.add_folder(u"C:\\in\\link").link = u"C:\\out";
        system.add_folder(u"C:\\in\\inner link").link = u"C:\\in\\folder";
        system.add(u"C:\\in\\file link").link = u"C:\\out\\b.txt";
        system.add(u"C:\\in\\lost link").link = u"C:\\out\\none.txt";
        policy.read_roots = Roots{u"C:\\in"};
    }
    System& guarded() {
        if (!guarded_)
            guarded_.emplace(policy, system);
        return *guarded_;
    }
    template <typename T>
    static ErrorCode code_of(const Result<T>& result) {
        return result ? ErrorCode::Ok : result.error();
    }
    ErrorCode writing(std::u16string_view path) {
        auto file = guarded().files().open_emptied(native(path));
        return file ? code_of((*file)->write("new")) : file.error();
    }

    test::WatchedSystem system;
    Policy policy;

  private:
    std::optional<GuardedSystem> guarded_;
};

TEST_F(GuardedPaths, LeadWhereTheyMay) {
    auto& files = guarded().files();
    EXPECT_TRUE(files.open_shared(native(u"C:\\in\\a.txt")));
    EXPECT_TRUE(files.open_shared(native(u"C:/in/inner link/c.txt")));
    EXPECT_EQ(files.kind_of(native(u"C:\\in\\")), files::ItemKind::Folder);
    EXPECT_EQ(code_of(files.open_shared(native(u"C:\\in\\none.txt"))), ErrorCode::NotFound);
    EXPECT_EQ(writing(u"C:\\in\\new.txt"), ErrorCode::Ok);
    EXPECT_EQ(writing(u"C:\\in\\a.txt"), ErrorCode::Ok);
    EXPECT_EQ(system.at(u"C:\\in\\a.txt"), "new");
    EXPECT_EQ(code_of(guarded().tree().create_folder(native(u"C:\\in\\made"))), ErrorCode::Ok);
    EXPECT_EQ(system.trespasses.size(), 0u);
}

TEST_F(GuardedPaths, AreRefusedOutside) {
    for (const std::u16string_view path :
         {u"C:\\out\\b.txt", u"C:\\inside\\b.txt", u"C:\\in\\link\\b.txt", u"C:\\in\\link\\new\\x",
          u"C:\\in\\file link", u"C:\\in\\lost link", u"C:\\in\\a.txt:stream", u"C:\\in\\COM1",
          u"C:\\in\\nul.txt", u"\\\\?\\C:\\in\\a.txt", u"\\\\.\\C:\\in\\a.txt", u"//./pipe/x",
          u"\\??\\C:\\in\\a.txt", u"\\\\server\\share\\a.txt", u"a.txt", u"COM1"}) {
        const std::string what = utf8_from_utf16(path);
        CallScope scope(system, policy.limits);
        EXPECT_EQ(code_of(guarded().files().open_shared(native(path))), ErrorCode::RefusedByPolicy)
            << what;
        EXPECT_TRUE(scope.is_refused()) << what;
        EXPECT_EQ(writing(path), ErrorCode::RefusedByPolicy) << what;
        EXPECT_EQ(system.trespasses, std::vector<std::u16string>()) << what;
        system.trespasses.clear();
    }
    EXPECT_EQ(system.at(u"C:\\out\\b.txt"), "secret");
    EXPECT_EQ(system.find(u"C:\\out\\none.txt"), nullptr);
}

// A link stands in the place of the file by the time that it is opened.
TEST_F(GuardedPaths, AreJudgedByWhatIsOpen) {
    class Swapping : public test::WatchedSystem {
      public:
        Result<std::unique_ptr<files::File>> open_to_write(const NativePath&) override {
            return FakeSystem::open_to_write(native(u"C:\\out\\b.txt"));
        }
    } swapping;
    swapping.add(u"C:\\in\\a.txt", "text");
    swapping.add(u"C:\\out\\b.txt", "secret");
    GuardedSystem over(policy, swapping);
    EXPECT_EQ(code_of(over.files().open_emptied(native(u"C:\\in\\a.txt"))),
              ErrorCode::RefusedByPolicy);
    EXPECT_EQ(swapping.at(u"C:\\out\\b.txt"), "secret");
}

TEST_F(GuardedPaths, MayBeReadAndNotWritten) {
    policy.write_roots = Roots{u"C:\\in\\folder"};
    EXPECT_EQ(writing(u"C:\\in\\a.txt"), ErrorCode::RefusedByPolicy);
    EXPECT_EQ(code_of(guarded().files().remove(native(u"C:\\in\\a.txt"))),
              ErrorCode::RefusedByPolicy);
    EXPECT_EQ(code_of(guarded().properties().set_attributes(native(u"C:\\in\\a.txt"), 1)),
              ErrorCode::RefusedByPolicy);
    EXPECT_EQ(code_of(guarded().files().rename(
                  native(u"C:\\in\\a.txt"), native(u"C:\\in\\folder\\a.txt"), files::Replace::No)),
              ErrorCode::RefusedByPolicy);
    EXPECT_EQ(system.at(u"C:\\in\\a.txt"), "text");
    EXPECT_EQ(writing(u"C:\\in\\folder\\c.txt"), ErrorCode::Ok);
    // A root stays where it is.
    EXPECT_EQ(code_of(guarded().tree().remove_folder(native(u"C:\\in\\folder\\"))),
              ErrorCode::RefusedByPolicy);
}

TEST_F(GuardedPaths, AreOpenOnEveryDiskWithoutRoots) {
    policy.read_roots.reset();
    EXPECT_TRUE(guarded().files().open_shared(native(u"C:\\out\\b.txt")));
    EXPECT_EQ(code_of(guarded().files().open_shared(native(u"\\\\server\\share\\x"))),
              ErrorCode::RefusedByPolicy);
    EXPECT_EQ(code_of(guarded().files().open_shared(native(u"C:\\out\\COM1"))),
              ErrorCode::RefusedByPolicy);
}

TEST_F(GuardedPaths, OfOwnTemporaryFilesAreFree) {
    const auto name = guarded().files().temporary_name({});
    ASSERT_TRUE(name);
    EXPECT_TRUE(guarded().files().open_new(*name));
    EXPECT_EQ(code_of(guarded().files().open_new(native(u"T:\\VELLTEMP{9}.tmp"))),
              ErrorCode::RefusedByPolicy);
}

TEST_F(GuardedPaths, OfLaunchedThingsAreChecked) {
    auto& desktop = guarded().desktop();
    system.add(u"C:\\in\\a.lnk", "");
    files::LaunchRequest request;
    for (const std::u16string target : {u"cmd", u"C:\\out\\b.txt", u"C:\\in\\a.lnk", u"file:x"}) {
        request.target = target;
        EXPECT_EQ(code_of(desktop.launch(request)), ErrorCode::RefusedByPolicy)
            << utf8_from_utf16(target);
    }
    EXPECT_EQ(system.trespasses.size(), 0u);
    request.target = u"C:\\in\\a.txt";
    EXPECT_TRUE(desktop.launch(request));
}

// The clock of the call goes on by a second with each look.
class Hurrying : public test::WatchedSystem {
  public:
    std::uint64_t milliseconds() override { return now_ += 1000; }

  private:
    std::uint64_t now_ = 0;
};

TEST(PolicyLimits, EndACallThatTakesTooLong) {
    Hurrying system;
    system.add(u"C:\\in\\a.txt", std::string(100, 'x'));
    Policy policy;
    policy.limits.seconds = 5;
    GuardedSystem guarded(policy, system);
    const CallScope scope(system, policy.limits);
    auto file = guarded.files().open_shared(native(u"C:\\in\\a.txt"));
    ASSERT_TRUE(file);
    char byte = 0;
    int reads = 0;
    while ((*file)->read({&byte, 1}))
        ++reads;
    EXPECT_GT(reads, 0);
    EXPECT_LT(reads, 5);
    EXPECT_EQ(scope.refusal().reason, "seconds");
    // Its remains can be removed.
    file->reset();
    EXPECT_TRUE(guarded.files().remove(native(u"C:\\in\\a.txt")));
}

TEST(PolicyLimits, EndACommandThatSaysTooMuch) {
    class Talking : public test::WatchedSystem {
      public:
        class Command : public files::RunningCommand {
            Result<bool> has_ended() override { return false; }
            void wait(std::uint32_t) override {}
            std::optional<std::size_t> waiting_output() override { return 10; }
            Result<std::size_t> read(std::span<char> buffer) override { return buffer.size(); }
        };
        Result<std::unique_ptr<files::RunningCommand>>
        start(const std::u16string&, const files::CommandSettings& settings) override {
            ends_with_children = settings.ends_with_children;
            return std::unique_ptr<files::RunningCommand>(std::make_unique<Command>());
        }
        bool ends_with_children = false;
    } system;
    Policy policy;
    policy.limits.command_output_bytes = 25;
    policy.ends_command_children = true;
    GuardedSystem guarded(policy, system);
    const CallScope scope(system, policy.limits);
    auto command = guarded.commands().start(u"dir", {});
    ASSERT_TRUE(command);
    EXPECT_TRUE(system.ends_with_children);
    std::array<char, 10> buffer;
    EXPECT_TRUE((*command)->read(buffer));
    EXPECT_TRUE((*command)->read(buffer));
    EXPECT_FALSE((*command)->read(buffer));
    EXPECT_EQ(scope.refusal().reason, "commandOutputBytes");
}

constexpr Moment morning{{2026, 3, 1, 9, 5, 0}, 7, -210};

TEST(AuditLine, CannotBeForged) {
    test::FakeSystem system;
    const Limits limits;
    CallScope scope(system, limits);
    scope.note_path(Access::Read, u"C:\\a\n{\"function\":\"x\"}\r\u2028\u0085\u202E\"");
    scope.note_path(Access::Read, u"C:\\b");
    scope.note_path(Access::Write, u"C:\\b");
    scope.refuse("path", u"C:\\c\nd");
    const std::string line = line_of(
        {morning, {.session = 7, .file = {}, .account = u"a\nb"}, "VlFile_Exists", -4225}, scope);
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    EXPECT_TRUE(test::is_strict_json(line.substr(0, line.size() - 1))) << line;
    EXPECT_EQ(
        line,
        "{\"time\":\"2026-03-01T09:05:00.007-03:30\",\"session\":7,"
        "\"account\":\"a\uFFFDb\",\"function\":\"VlFile_Exists\","
        "\"read\":[\"C:\\\\a\uFFFD{\\\"function\\\":\\\"x\\\"}\uFFFD\uFFFD\uFFFD\uFFFD\\\"\"],"
        "\"written\":[\"C:\\\\b\"],\"result\":-4225,\"refused\":\"path\","
        "\"refusedPath\":\"C:\\\\c\uFFFDd\",\"ms\":0}\n");
}

TEST(AuditLine, TellsHowManyPathsItLeavesOut) {
    test::FakeSystem system;
    const Limits limits;
    CallScope scope(system, limits);
    for (char16_t name = u'a'; name <= u'z'; ++name)
        for (int again = 0; again < 2; ++again)
            scope.note_path(Access::Delete, std::u16string{u'C', u':', u'\\', name});
    const std::string line = line_of({morning, {}, "VlFile_Exists", 0}, scope);
    EXPECT_NE(line.find("\"deletedMore\":6,"), line.npos) << line;
}

TEST(AuditFile, IsPutAsideWhenItIsFull) {
    test::FakeSystem system;
    system.add_folder(u"C:\\logs");
    AuditSettings settings{.folder = u"C:\\logs", .file_bytes = 10, .old_files = 2};
    AuditFile file(system, settings);
    for (const std::string_view line : {"first\n", "second\n", "third\n", "4th\n", "fifth\n"})
        EXPECT_TRUE(file.append(line));
    EXPECT_EQ(system.at(u"C:\\logs\\VellFile.audit.jsonl"), "fifth\n");
    EXPECT_EQ(system.at(u"C:\\logs\\VellFile.audit.1.jsonl"), "third\n4th\n");
    EXPECT_EQ(system.at(u"C:\\logs\\VellFile.audit.2.jsonl"), "second\n");
    EXPECT_EQ(system.contents().size(), 3u);
}

TEST(AuditFile, HoldsNoHalfOfALine) {
    for (int operation = 1; operation < 12; ++operation) {
        test::FakeSystem system;
        system.add_folder(u"C:\\logs");
        AuditFile file(system, {.folder = u"C:\\logs"});
        ASSERT_TRUE(file.append("whole\n"));
        system.fail(operation, ErrorCode::DiskError);
        const bool is_written = file.append("another\n").has_value();
        system.fail(0, ErrorCode::Ok);
        const std::string lines = system.at(u"C:\\logs\\VellFile.audit.jsonl");
        EXPECT_TRUE(lines == "whole\n" || lines == "whole\nanother\n") << operation << lines;
        EXPECT_TRUE(!is_written || lines == "whole\nanother\n") << operation;
    }
}

TEST(AuditLog, LosesLinesAndNoTimeOnASlowDisk) {
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::string written;
    AuditLog log([] { return morning; },
                 [&](std::string_view lines) {
                     released.wait();
                     written += lines;
                     return Result<void>();
                 });
    log.start({});
    const std::string line = std::string(1023, 'x') + '\n';
    constexpr std::size_t room = AuditLog::queue_limit / 1024;
    for (std::size_t i = 0; i < room + 100; ++i)
        log.add(line); // nobody takes them from the queue meanwhile
    release.set_value();
    ASSERT_TRUE(log.stop(std::chrono::seconds(60)));
    const std::string lost = lost_line(morning, 100);
    EXPECT_EQ(written.size(), room * 1024 + lost.size());
    EXPECT_TRUE(written.ends_with(lost));
}

TEST(AuditLog, TriesAgainWhatTheDiskRefusedAndTellsOnce) {
    int tries = 0;
    std::promise<void> done;
    std::string written, told;
    AuditLog log([] { return morning; },
                 [&](std::string_view lines) {
                     ++tries;
                     if (tries != 3)
                         return Result<void>(Failure{ErrorCode::NotFound});
                     written += lines;
                     done.set_value();
                     return Result<void>();
                 },
                 std::chrono::milliseconds(1));
    log.add("one\n");
    log.start([&](std::string_view words) { (told += words) += '\n'; });
    done.get_future().wait();
    log.add("two\n");
    log.add("three\n");
    ASSERT_TRUE(log.stop(std::chrono::seconds(60)));
    EXPECT_EQ(written, "one\n");
    const std::string trouble = "The audit log cannot be written, code -43; its lines wait\n";
    EXPECT_EQ(told, trouble + trouble + "2 lines of the audit log are lost\n");
}

TEST(PolicyFile, IsFoundBesideThePlugIn) {
    test::FakeSystem system;
    const PolicyPlace place{u"C:\\plug-ins\\", [] {
                                return std::u16string(u"C:\\logs");
                            }};
    system.add_folder(u"C:\\plug-ins");
    system.add_folder(u"C:\\logs");
    EXPECT_EQ(guard_of(place, system, functions), nullptr);

    system.add(u"C:\\plug-ins\\VellFile.policy.json", R"({"deny": ["VlFile_Launch"]})");
    auto guard = guard_of(place, system, functions);
    ASSERT_NE(guard, nullptr);
    EXPECT_TRUE(guard->denies("VlFile_Launch"));
    EXPECT_FALSE(guard->denies("VlFile_Exists"));

    for (const bool is_open_elsewhere : {false, true}) {
        auto& file = system.add(u"C:\\plug-ins\\VellFile.policy.json", "{");
        file.is_watched = is_open_elsewhere;
        guard = guard_of(place, system, functions);
        ASSERT_NE(guard, nullptr);
        EXPECT_TRUE(guard->denies("VlFile_Exists"));
        guard->start({});
        EXPECT_TRUE(guard->stop());
        EXPECT_NE(system.at(u"C:\\logs\\VellFile.audit.jsonl").find("allows nothing"),
                  std::string::npos);
        system.erase(u"C:\\logs\\VellFile.audit.jsonl");
    }
}

} // namespace
} // namespace vell::policy
