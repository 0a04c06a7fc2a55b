// Every function of the plug-in with paths that the policy does not allow.
#include "src/files/paths/defaults.h"
#include "src/plugin/plugin.h"
#include "src/policy/guard.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/no_drops.h"
#include "tests/portable/watched_system.h"

#include <map>
#include <set>

namespace vell::plugin {
namespace {

using Texts = std::vector<std::u16string>;

// Takes whatever is registered.
class AnyHost : public Host {
  public:
    void meet(std::int16_t) override {}
    bool has_steps() const override { return true; }
    ErrorCode add(const FunctionRow&) override { return ErrorCode::Ok; }
    ErrorCode add(const StepRow&) override { return ErrorCode::Ok; }
    ErrorCode remove_function(std::int16_t) override { return ErrorCode::Ok; }
    ErrorCode remove_step(std::int16_t) override { return ErrorCode::Ok; }
};

class AnyCall : public HostCall {
  public:
    explicit AnyCall(Texts parameters) : call(std::move(parameters)) {}
    params::Call& open(bool) override { return call; }
    void set_result(std::string_view text) override { call.set_literal(text); }

    class Call : public test::FakeCall {
      public:
        using FakeCall::FakeCall;
        std::optional<params::CalendarTime> time_stamp(std::size_t) override { return test::noon; }
    } call;
};

// The names of the parameters behind the switches.
std::vector<std::string> parameter_names(const FunctionRow& row) {
    std::string text(row.prototype.substr(std::min(row.prototype.find('('), row.prototype.size())));
    if (const std::size_t comment = text.find("/*"); comment != text.npos)
        text.erase(comment, text.find("*/") + 2 - comment);
    std::erase_if(text,
                  [](char c) { return std::string_view("(){} ").find(c) != std::string::npos; });
    std::vector<std::string> names;
    for (std::size_t at = text.find(';'); at != text.npos; at = text.find(';', at + 1))
        names.push_back(text.substr(at + 1, text.find(';', at + 1) - at - 1));
    return names;
}

// Every name that speaks of an item on a disk, so that a new function's are among them.
bool is_path_name(std::string_view parameter) {
    std::string name(parameter);
    std::ranges::transform(name, name.begin(), fold_ascii<char>);
    for (const std::string_view word : {"path", "file", "folder", "disk", "source", "spec"})
        if (name.find(word) != name.npos)
            return true;
    return false;
}

// Parameters that are no path, or of which nothing but the text is looked at. Nothing outside may
// be reached with them all the same.
const std::map<std::string_view, std::vector<std::string_view>> texts_only = {
    {"VlFile_DiskInfo", {"diskname"}}, // disks have a test of their own
    {"VlFile_MountDisk", {"disk"}},
    {"VlFile_UnmountDisk", {"diskname"}},
    {"VlFile_DragAndDrop", {"fileName"}}, // of a document of the host
    {"VlFile_ExportToFile", {"source"}},  // a container
    {"VlFile_FileSpecToFullPath", {"FileSpec"}},
    {"VlFile_FullPathToFileSpec", {"filePath"}},
    {"VlFile_GetExtension", {"filepath"}},
    {"VlFile_GetFileName", {"filepath"}},
    {"VlFile_GetPathTo", {"desiredFilename", "fileSize"}},
    {"VlFile_GetResForkSize", {"filePath"}}, // not available
    {"VlFile_ReferenceToClip", {"filePath", "pathToFMFile"}},
    {"VlFile_SetDefaultFileSpec", {"filePath"}}, // whoever uses it is refused
    {"VlFile_SetDefaultType", {"fileType"}},
    {"VlFile_SetFinderComment", {"filePath"}},
};

// Functions that these calls do not get as far as a path, for reasons of their own. They fail.
const std::set<std::string_view> failing_before = {
    "VlFile_GetFileAttribute", "VlFile_InsertContents", "VlFile_SetMovieMetaData"};

bool is_text_only(std::string_view function, std::string_view parameter) {
    const auto found = texts_only.find(function);
    return found != texts_only.end() && std::ranges::count(found->second, parameter) > 0;
}

class WalkOfTheRegistry : public ::testing::Test {
  protected:
    WalkOfTheRegistry() { fill(); }
    ~WalkOfTheRegistry() override { files::defaults().reset(); }

    // As if nothing had been called before.
    void fill() {
        files::defaults().reset();
        for (const auto& [path, bytes] : system.all())
            system.erase(path);
        system.add(u"C:\\in\\a.txt", "text");
        system.add_folder(u"C:\\in\\folder");
        system.add(u"C:\\out\\b.pdf", "secret");
        system.add_folder(u"C:\\out\\folder");
        system.add_folder(u"C:\\in\\link").link = u"C:\\out";
        system.add(u"C:\\in\\file link").link = u"C:\\out\\b.pdf";
    }
    std::string call(const FunctionRow& row, Texts parameters) {
        return call(plugin, row, std::move(parameters));
    }
    static std::string call(Plugin& asked, const FunctionRow& row, Texts parameters) {
        AnyCall given(std::move(parameters));
        asked.serve(row.registered_id(), given);
        return utf8_from_utf16(given.call.result().value_or(u"<none>"));
    }
    // The others are such as the function can work with.
    Texts with(const std::vector<std::string>& names, std::size_t index,
               const std::u16string& value) const {
        Texts parameters{u"-files -MD5 -Created GetExif JPEGComment"};
        for (std::size_t i = 0; i < names.size(); ++i) {
            const bool is_target = names[i].find("est") != std::string::npos;
            const bool is_folder = names[i].find("older") != std::string::npos;
            parameters.push_back(i == index                ? value
                                 : !is_path_name(names[i]) ? u"1"
                                 : is_target               ? u"C:\\in\\new.txt"
                                 : is_folder               ? u"C:\\in\\folder"
                                                           : u"C:\\in\\a.txt");
        }
        return parameters;
    }
    std::map<std::u16string, std::string> outside() const {
        auto items = system.all();
        std::erase_if(items, [](const auto& item) { return !item.first.starts_with(u"C:\\out"); });
        return items;
    }

    test::WatchedSystem system;
    policy::Guard guard{policy(), system, [] {
                            return std::u16string();
                        }};
    AnyHost host;
    test::NoDrops none;
    dragdrop::DragAndDrop drops{none, none, guard.system().files()};
    Plugin plugin{host, guard.system(), drops, &guard};

  private:
    static policy::Policy policy() {
        policy::Policy policy;
        policy.read_roots = policy.write_roots = policy::Roots{u"C:\\in"};
        policy.audit.is_on = false;
        return policy;
    }
};

TEST_F(WalkOfTheRegistry, RefusesEveryPathOutside) {
    const auto secret = outside();
    int refused = 0;
    for (const FunctionRow& row : function_rows()) {
        const std::vector<std::string> names = parameter_names(row);
        for (std::size_t i = 0; i < names.size(); ++i) {
            const bool is_path = is_path_name(names[i]) && !is_text_only(row.name(), names[i]);
            for (const std::u16string path :
                 {u"C:\\out\\b.pdf", u"C:\\out\\folder", u"C:\\out\\new", u"C:\\in\\..\\out\\b.pdf",
                  u"C:/out/b.pdf", u"C:\\in\\link\\b.pdf", u"C:\\in\\link\\folder",
                  u"C:\\in\\link\\new", u"C:\\inside\\b.pdf", u"D:\\b.pdf",
                  u"\\\\server\\share\\b.pdf", u"\\\\?\\C:\\out\\b.pdf", u"\\\\.\\COM1"}) {
                fill();
                const std::string answer = call(row, with(names, i, path));
                const std::string what =
                    std::string(row.name()) + " " + names[i] + " " + utf8_from_utf16(path);
                EXPECT_EQ(system.trespasses, Texts()) << what << " answers " << answer;
                system.trespasses.clear();
                EXPECT_EQ(outside(), secret) << what;
                // The name alone tells that there is no text to be read.
                const bool is_known =
                    row.name() == "VlFile_GetAsPlainText" && !path.ends_with(u".pdf");
                if (!is_path || is_known)
                    continue;
                // What Windows has no item for may fail before it is judged.
                if (path.starts_with(u"\\\\.\\") || failing_before.contains(row.name())) {
                    EXPECT_TRUE(answer.starts_with("$$")) << what << " answers " << answer;
                } else {
                    EXPECT_EQ(answer, "$$-4225") << what;
                }
                ++refused;
            }
        }
    }
    EXPECT_EQ(outside(), secret);
    EXPECT_GT(refused, 500);
}

// Whatever is allowed does the same as where there is no policy.
TEST_F(WalkOfTheRegistry, ChangesNothingInside) {
    dragdrop::DragAndDrop free_drops{none, none, system};
    Plugin free{host, system, free_drops};
    // The system here does not tell a missing folder from a missing file.
    const auto outcome = [](Plugin& asked, const FunctionRow& row, Texts parameters) {
        const std::string answer = call(asked, row, std::move(parameters));
        return answer == "$$-120" ? "$$-43" : answer;
    };
    int served = 0;
    for (const FunctionRow& row : function_rows()) {
        const std::vector<std::string> names = parameter_names(row);
        for (std::size_t i = 0; i < names.size(); ++i)
            for (const std::u16string path :
                 {u"C:\\in\\a.txt", u"C:\\in\\folder", u"C:\\in\\new.zip", u"C:\\in\\none\\new",
                  u"C:\\in\\none\\1\\2\\3\\4\\new", u"C:/in/a.txt"}) {
                fill();
                const std::string expected = outcome(free, row, with(names, i, path));
                const auto items = system.all();
                fill();
                const std::string what =
                    std::string(row.name()) + " " + names[i] + " " + utf8_from_utf16(path);
                EXPECT_EQ(outcome(plugin, row, with(names, i, path)), expected) << what;
                EXPECT_EQ(system.all(), items) << what;
                served += !expected.starts_with("$$");
            }
    }
    EXPECT_GT(served, 300);
    EXPECT_EQ(system.trespasses, Texts());
}

TEST_F(WalkOfTheRegistry, RefusesOtherDisks) {
    const auto ask = [&](std::string_view name, Texts parameters) {
        const auto row = std::ranges::find(function_rows(), name, &FunctionRow::name);
        return call(*row, std::move(parameters));
    };
    for (const std::string_view function : {"VlFile_DiskInfo", "VlFile_UnmountDisk"}) {
        EXPECT_EQ(ask(function, {u"", u"D:"}), "$$-4225");
        EXPECT_EQ(ask(function, {u"", u"\\\\server\\share\\"}), "$$-4225");
    }
    EXPECT_EQ(ask("VlFile_MountDisk", {u"", u"", u"server", u"share"}), "$$-4225");
    EXPECT_EQ(ask("VlFile_ListDisks", {u""}).find("D:"), std::string::npos);
    EXPECT_EQ(system.trespasses, Texts());
}

TEST_F(WalkOfTheRegistry, RefusesTheDefaultFile) {
    const auto ask = [&](std::string_view name, Texts parameters) {
        const auto row = std::ranges::find(function_rows(), name, &FunctionRow::name);
        return call(*row, std::move(parameters));
    };
    ask("VlFile_SetDefaultFileSpec", {u"", u"C:\\out\\b.pdf"});
    EXPECT_EQ(ask("VlFile_SetContents", {u"", u"new"}), "$$-4225");
    EXPECT_EQ(ask("VlFile_AppendContents", {u"", u"new"}), "$$-4225");
    ask("VlFile_SetDefaultFileSpec", {u"", u""});
    EXPECT_EQ(system.at(u"C:\\out\\b.pdf"), "secret");
}

// What a policy without roots denies.
TEST_F(WalkOfTheRegistry, ServesNoDeniedFunction) {
    policy::Policy denying;
    denying.denied = {"VlFile_CopyFile", std::string(policy::disable_all_action)};
    denying.audit.is_on = false;
    policy::Guard denied{denying, system, nullptr};
    Plugin other{host, denied.system(), drops, &denied};
    const auto answer = [&](std::int16_t id, Texts parameters) {
        AnyCall given(std::move(parameters));
        other.serve(id, given);
        return utf8_from_utf16(given.call.result().value_or(u"<none>"));
    };
    EXPECT_EQ(answer(4210, {u"", u"C:\\in\\a.txt", u"C:\\in\\b.txt"}), "$$-4225");
    EXPECT_EQ(answer(7210, {u"", u"C:\\in\\a.txt", u"C:\\in\\b.txt"}), "$$-4225"); // its step
    EXPECT_EQ(answer(4203, {u"-DisableAllFunctions", u"secret"}), "$$-4225");
    EXPECT_EQ(answer(4241, {u"", u"C:\\in\\a.txt"}), "4");
    EXPECT_EQ(answer(4203, {u"-CurrentEnabledStatus"}), "1");

    policy::Guard nothing{policy::policy_that_allows_nothing("it is broken"), system, [] {
                              return std::u16string(u"C:\\in");
                          }};
    Plugin closed{host, nothing.system(), drops, &nothing};
    for (const FunctionRow& row : function_rows()) {
        AnyCall given({u"", u"C:\\in\\a.txt", u"C:\\in\\b.pdf", u"1", u"1", u"1"});
        closed.serve(row.registered_id(), given);
        EXPECT_EQ(given.call.result() == u"$$-4225", row.served != Served::Always) << row.name();
    }
}

} // namespace
} // namespace vell::plugin
