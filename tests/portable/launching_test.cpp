// What the desktop is asked for, and what the dialogs are.
#include "src/files/commands/shell.h"
#include "src/files/desktop/file_patterns.h"
#include "src/files/desktop/launching.h"
#include "src/files/desktop/select_dialogs.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/fake_system.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using params::Call;
using testing::FakeCall;

struct CallWithoutUser : FakeCall {
    using FakeCall::FakeCall;
    bool can_ask_user() const override { return false; }
};

// Knows two items, and writes down what it is asked for.
class NotedDesktop : public testing::FakeSystem {
  public:
    std::u16string asked;

    Result<std::uint32_t> attributes(const NativePath& path) override {
        for (const auto* file : {u"C:\\d\\a b.txt", u"//s/t/a", u"C:\\long"})
            if (path.wide == file)
                return bit(Attribute::Archive);
        if (path.wide == u"C:\\d" || path.wide == u"C:\\d\\")
            return bit(Attribute::Folder);
        return Failure{ErrorCode::NotFound};
    }
    Result<std::u16string> absolute_path(const std::u16string& path) override {
        if (path == u"C:\\long")
            return std::u16string(260, u'x');
        std::u16string full = path;
        std::ranges::replace(full, u'/', u'\\');
        return full;
    }
    Result<void> launch(const LaunchRequest& request) override {
        asked = u"launch " + request.target + u'|' + request.parameters + u'|' +
                request.working_folder + u'|' + request.verb + u'|' +
                static_cast<char16_t>(u'0' + static_cast<int>(request.window));
        return {};
    }
    Result<void> reveal(const std::u16string& path) override {
        asked = u"reveal " + path;
        return {};
    }
    Result<void> bring_to_front(void*) override { return Failure{ErrorCode::NoFrontWindow}; }
};

TEST(Launching, AsksTheDesktop) {
    const struct {
        params::Body body;
        std::vector<std::u16string> parameters;
        const char* result; // what was asked for, or the code
    } cases[] = {
        {launch, {u"", u"C:\\d\\a b.txt"}, "launch C:\\d\\a b.txt||C:\\d\\||0"},
        {launch,
         {u"-print -hide", u"C:\\d\\a b.txt", u"/x"},
         "launch C:\\d\\a b.txt|/x|C:\\d\\|print|1"},
        {launch, {u"-Edit-Maximize", u"C:\\d"}, "launch C:\\d||C:\\d|edit|3"},
        {launch, {u"-Open", u"calc"}, "launch calc|||open|0"},
        {launch, {u"", u"d\\calc"}, "$$-43"},
        {launch, {u"", u"C:\\long"}, "$$206"},
        {launch, {u"", u"a\rb"}, "$$-4254"},
        {launch, {u"", u"C:\\d", std::u16string(1, u'\0')}, "$$-50"},
        {launch, {u"", u"HTTPS://x.example/\"a b", u"p"}, "launch HTTPS://x.example/%22a%20b||||0"},
        {launch, {u"", u"fmp20:$x"}, "launch fmp20:$x||||0"},
        {launch, {u"", u"http:\ta"}, "$$-43"},
        {launch, {u"", u"fmpx:y"}, "$$-43"},
        {reveal, {u"", u"file://s/t/a"}, "reveal \\\\s\\t\\a"},
        {open_folder, {u"", u"C:\\d"}, "launch C:\\d||C:\\d|open|0"},
        {open_folder, {u"", u"C:\\d\\a b.txt"}, "$$-1407"},
        {open_folder, {u"", u"C:\\none"}, "$$-120"},
        {reveal, {u"", u"C:\\d\\a b.txt"}, "reveal C:\\d\\a b.txt"},
        {reveal, {u"", u"C:\\d\\"}, "reveal C:\\d"},
        {reveal, {u"-OpenFolder", u"C:\\d"}, "launch C:\\d||C:\\d|open|0"},
        {bring_to_front, {}, "$$-5600"},
    };
    for (const auto& c : cases) {
        NotedDesktop desktop;
        FakeCall call(c.parameters);
        const std::string result = answer_of(call, c.body(call, desktop));
        EXPECT_EQ(result == "0" ? utf8_from_utf16(desktop.asked) : result, c.result);
        CallWithoutUser alone(c.parameters);
        NotedDesktop untouched;
        EXPECT_EQ(answer_of(alone, c.body(alone, untouched)), "$$-4251") << c.result;
        EXPECT_EQ(untouched.asked, u"");
    }
}

class NotedCommands : public testing::FakeSystem {
  public:
    bool shown = false;
    Result<std::unique_ptr<RunningCommand>> start(const std::u16string&,
                                                  const CommandSettings& settings) override {
        shown = settings.show_window;
        return Failure{ErrorCode::NotFound};
    }
};

TEST(ExecuteShell, HasNoWindowWhereNobodySeesIt) {
    const auto shows_window = [](FakeCall& call) {
        NotedCommands system;
        EXPECT_EQ(answer_of(call, execute_shell(call, system)), "$$-43");
        return system.shown;
    };
    const std::vector<std::u16string> parameters{u"-ShowCommandWindow", u"dir"};
    FakeCall call(parameters);
    EXPECT_TRUE(shows_window(call));
    CallWithoutUser alone(parameters);
    EXPECT_FALSE(shows_window(alone));
    alone.set_step_option(6, 1);
    EXPECT_FALSE(shows_window(alone));
}

// The options of a dialog in one line.
std::string shown(const FileDialog& dialog) {
    return utf8_from_utf16(dialog.title + u'|' + dialog.initial_folder + u'|' + dialog.types +
                           u'|' + dialog.name + u'|') +
           (dialog.several ? "several " : "") + (dialog.show_hidden ? "hidden " : "") +
           (dialog.ask_before_replacing ? "ask" : "");
}

// A user who selects two files, or none.
class Selection : public testing::FakeSystem {
  public:
    std::string dialog;
    bool cancels = false;
    Result<std::vector<std::u16string>> show(const FileDialog& wanted) override {
        dialog = shown(wanted);
        if (cancels)
            return Failure{ErrorCode::Cancelled};
        return std::vector<std::u16string>{u"C:\\a", u"C:\\b"};
    }
};

TEST(FilePatterns, TakeTypesInEveryForm) {
    EXPECT_EQ(file_patterns(u""), u"");
    EXPECT_EQ(file_patterns(u"txt"), u"*.txt");
    EXPECT_EQ(file_patterns(u" txt, .doc;*.jpg\rpng "), u"*.txt;*.doc;*.jpg;*.png");
    EXPECT_EQ(file_patterns(u"*.* ,;"), u"*.*");
}

TEST(SelectDialogs, ShowWhatTheCallSays) {
    const struct {
        params::Body body;
        std::vector<std::u16string> parameters;
        const char* dialog; // or the code
        const char* result = "C:\\a\rC:\\b";
    } cases[] = {
        {select_file_dialog, {u"", u""}, "Select a file.||||ask"},
        {select_file_dialog,
         {u"-AllowMultipleFiles -Types=txt, pdf -ShowInvisibles -FileMakerPathFormat", u"Two",
          u"filewin:/C:/d"},
         "Two|C:/d\\|txt, pdf||several hidden ask",
         "filewin:/C:/a\rfilewin:/C:/b"},
        {select_file_dialog, {u"", u"", u"$$-43"}, "$$-4299"},
        {select_folder_dialog, {u"-ShowInvisibles", u"Where"}, "Where||||hidden ask", "C:\\a\\"},
        {save_file_dialog,
         {u"", u"", u"r.pdf", u"file://s/t/"},
         "Save the file as:|//s/t/\\||r.pdf|ask",
         "C:\\a"},
        {save_file_dialog, {u"-NoOverwritePrompt -Types=x", u"P"}, "P||x||", "C:\\a"},
        {save_file_dialog, {u"", u"", u"a/b"}, "$$-37"},
        {save_file_dialog, {u"", u"", u"a. "}, "Save the file as:|||a|ask", "C:\\a"},
        {save_file_dialog, {u"", u"", u"..."}, "$$-37"},
        {save_file_dialog, {u"", u"", u"aux.txt"}, "$$-37"},
        {save_file_dialog, {u"", u"", u"$$-43"}, "$$-4299"},
        {save_file_dialog, {u"", u"", std::u16string(256, u'a')}, "$$-37"},
    };
    for (const auto& c : cases) {
        Selection system;
        FakeCall call(c.parameters);
        const std::string result = answer_of(call, c.body(call, system));
        EXPECT_EQ(system.dialog.empty() ? result : system.dialog, c.dialog);
        if (!system.dialog.empty()) {
            EXPECT_EQ(result, c.result) << c.dialog;
        }
    }
    FakeCall step({u"", u"", u""});
    step.set_step_option(3, 1);
    step.set_step_option(4, 0);
    Selection system;
    system.cancels = true;
    EXPECT_EQ(answer_of(step, select_file_dialog(step, system)), "$$-128");
    EXPECT_EQ(system.dialog, "Select a file.||||several ask");
}

} // namespace
} // namespace vell::files
