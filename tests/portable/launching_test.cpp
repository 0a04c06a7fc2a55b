// What the desktop is asked for, and what the dialogs are.
#include "src/files/desktop/file_patterns.h"
#include "src/files/desktop/launching.h"
#include "src/files/desktop/select_dialogs.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using test::FakeCall;

struct CallWithoutUser : FakeCall {
    using FakeCall::FakeCall;
    bool can_ask_user() const override { return false; }
};

// Knows two items, and writes down what it is asked for.
class NotedDesktop : public test::FakeSystem {
  public:
    std::u16string asked;

    NotedDesktop() {
        for (const auto* path : {u"C:\\d\\a b.txt", u"//s/t/a", u"C:\\long"})
            add(path);
    }
    Result<std::u16string> absolute_path(const std::u16string& path) override {
        if (path == u"C:\\long")
            return std::u16string(260, u'x');
        return FakeSystem::absolute_path(path);
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
    const std::map<std::u16string, params::Body> functions{{u"Launch", launch},
                                                           {u"Reveal", reveal},
                                                           {u"OpenFolder", open_folder},
                                                           {u"BringToFront", bring_to_front}};
    for (const auto& row : test::wide_table("launches.txt", 5)) {
        SCOPED_TRACE(utf8_from_utf16(row[0] + u' ' + row[2]));
        const params::Body body = functions.at(row[0]);
        const std::vector<std::u16string> parameters(row.begin() + 1, row.begin() + 4);
        NotedDesktop desktop;
        FakeCall call(parameters);
        const std::string result = answer_of(call, body(call, desktop));
        EXPECT_EQ(result == "0" ? utf8_from_utf16(desktop.asked) : result, utf8_from_utf16(row[4]));
        CallWithoutUser alone(parameters);
        NotedDesktop untouched;
        EXPECT_EQ(answer_of(alone, body(alone, untouched)), "$$-4251");
        EXPECT_EQ(untouched.asked, u"");
    }
}

// The options of a dialog in one line.
std::string shown(const FileDialog& dialog) {
    return utf8_from_utf16(dialog.title + u'|' + dialog.initial_folder + u'|' + dialog.types +
                           u'|' + dialog.name + u'|') +
           (dialog.several ? "several " : "") + (dialog.show_hidden ? "hidden " : "") +
           (dialog.ask_before_replacing ? "ask" : "");
}

// A user who selects two files, or none.
class Selection : public test::FakeSystem {
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
    const std::map<std::u16string, params::Body> dialogs{{u"SelectFile", select_file_dialog},
                                                         {u"SelectFolder", select_folder_dialog},
                                                         {u"SaveFile", save_file_dialog}};
    for (const auto& row : test::wide_table("dialogs.txt", 7)) {
        SCOPED_TRACE(utf8_from_utf16(row[0] + u' ' + row[5]));
        Selection system;
        FakeCall call({row.begin() + 1, row.begin() + 5});
        const std::string result = answer_of(call, dialogs.at(row[0])(call, system));
        EXPECT_EQ(system.dialog.empty() ? result : system.dialog, utf8_from_utf16(row[5]));
        EXPECT_EQ(system.dialog.empty() ? "" : result, utf8_from_utf16(row[6]));
    }
    Selection long_name;
    FakeCall too_long({u"", u"", std::u16string(256, u'a')});
    EXPECT_EQ(answer_of(too_long, save_file_dialog(too_long, long_name)), "$$-37");
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
