// VlFile_ExecuteShell with real commands, through the host.
#include "tests/windows/plugin_fixture.h"

namespace vell::test {
namespace {

// A command that takes so many seconds and prints nothing.
std::u16string pause(int seconds) {
    return u"ping -n " + to_utf16(std::to_wstring(seconds + 1)) + u" 127.0.0.1 >NUL";
}

class Shell : public PluginWithFolder {
  protected:
    std::u16string run(const char16_t* switches, const std::u16string& command) {
        return call(u"VlFile_ExecuteShell", {Value(switches), Value(command)});
    }
    bool appears(const std::wstring& name) const {
        for (int i = 0; i < 600; ++i, Sleep(50))
            if (exists(path(name)))
                return true;
        return false;
    }
    std::u16string quoted(const wchar_t* name) const { return u"\"" + path(name) + u"\""; }
};

TEST_F(Shell, GivesWhatTheCommandPrints) {
    EXPECT_EQ(run(u"", u"echo hello"), u"hello\r");
    EXPECT_EQ(run(u"", u"exit 3"), u""); // the number is no part of the result
    EXPECT_EQ(run(u"-ShowCommandWindow", u"echo shown"), u"shown\r");
    EXPECT_EQ(run(u"", u"echo lost 1>&2&echo kept"), u"kept\r");
    // How many blanks follow differs between command interpreters.
    const std::u16string both = run(u"", u"cmd /c \"echo both 1>&2\" 2>&1");
    EXPECT_TRUE(both.starts_with(u"both") && both.find_first_not_of(u' ', 4) == both.size() - 1 &&
                both.ends_with(u'\r'))
        << to_wide(both);
}

TEST_F(Shell, GivesAllOfALongOutput) {
    std::string bytes;
    std::u16string text;
    for (int i = 0; bytes.size() < 3'000'000; ++i) {
        const std::string line = std::to_string(i);
        bytes += line + "\xC3\xA9\xF0\x9F\x98\x80\r\n"; // cut by the reads at every place
        text += std::u16string(line.begin(), line.end()) + u"\u00E9\U0001F600\r";
    }
    folder.file(L"long.txt", bytes);
    EXPECT_TRUE(run(u"-TimeoutSecs=300", u"type " + quoted(L"long.txt")) == text);
}

TEST_F(Shell, ACommandThatReadsFindsNothing) {
    EXPECT_EQ(run(u"-TimeoutSecs=20", u"set /p answer=&echo after"), u"after\r");
    EXPECT_EQ(run(u"-TimeoutSecs=20", u"more&echo after"), u"after\r");
}

TEST_F(Shell, InheritsEnvironmentAndFolder) {
    SetEnvironmentVariableW(L"VELL_TEST_VARIABLE", L"inherited");
    EXPECT_EQ(run(u"", u"echo %VELL_TEST_VARIABLE%"), u"inherited\r");
    SetEnvironmentVariableW(L"VELL_TEST_VARIABLE", nullptr);
    wchar_t current[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, current);
    folder.file(L"here.txt", "");
    ASSERT_TRUE(SetCurrentDirectoryW(folder.path().c_str()));
    EXPECT_EQ(run(u"", u"if exist here.txt echo here"), u"here\r");
    SetCurrentDirectoryW(current);
    EXPECT_EQ(run(u"", u"if exist here.txt echo here"), u"");
}

TEST_F(Shell, GoesOnWithoutACommandThatTakesTooLong) {
    const std::u16string slow = pause(4) + u"&echo late>" + quoted(L"late.txt");
    EXPECT_EQ(run(u"-TimeoutTicks=6", slow), u"$$-4230");
    EXPECT_TRUE(appears(L"late.txt")); // it was left running
    // The number that a running command has.
    EXPECT_EQ(run(u"-TimeoutTicks=600", u"exit 259"), u"");
}

TEST_F(Shell, TakesCommandsAsLongAsTheInterpreterDoes) {
    const std::u16string text(8184 - 5, u'x');
    EXPECT_EQ(run(u"", u"echo " + text), text + u"\r");
}

TEST_F(Shell, WaitsForOthersThatWriteToTheOutputAsLongAsItIsTold) {
    const std::u16string leaves_one_behind =
        u"start /b cmd /c \"" + pause(3) + u"&echo late\"&echo early";
    EXPECT_EQ(run(u"", leaves_one_behind), u"early\rlate\r");
    EXPECT_EQ(run(u"-WaitAfterExitTicks=3", leaves_one_behind), u"early\r");
}

TEST_F(Shell, ACommandThatIsNotWaitedForInheritsNothingElse) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    HANDLE read_end = nullptr;
    HANDLE write_end = nullptr;
    ASSERT_TRUE(CreatePipe(&read_end, &write_end, &inheritable, 0));
    const UniqueHandle reader(read_end);
    UniqueHandle writer(write_end);
    EXPECT_EQ(run(u"-DontWaitOnResult", pause(4) + u"&echo text&echo done>" + quoted(L"done.txt")),
              u"0");
    writer.reset();
    // Nobody else has the other end.
    EXPECT_FALSE(PeekNamedPipe(reader.get(), nullptr, 0, nullptr, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_BROKEN_PIPE});
    EXPECT_FALSE(exists(path(L"done.txt")));
    EXPECT_TRUE(appears(L"done.txt"));
}

TEST_F(Shell, LeavesNoHandleOpen) {
    const auto handles = [] {
        DWORD count = 0;
        GetProcessHandleCount(GetCurrentProcess(), &count);
        return count;
    };
    const DWORD probe = handles();
    const UniqueHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (handles() != probe + 1)
        GTEST_SKIP() << "handles are not counted here";
    run(u"", u"echo first"); // what is loaded once
    const DWORD before = handles();
    for (int i = 0; i < 5; ++i) {
        run(u"", u"echo a");
        run(u"-DontWaitOnResult", u"echo a");
        run(u"-TimeoutTicks=0", pause(1));
        run(u"-TimeoutSecs=x", u"echo a");
    }
    EXPECT_EQ(handles(), before);
}

// A program may fail to start where many are started at once, which is no fault of ours: it has
// printed nothing then, and has left no file either.
TEST_F(Shell, ServesSessionsAtOnce) {
    start({.application_type = server});
    in_threads(4, [&](std::size_t session) {
        const std::u16string text(session + 1, static_cast<char16_t>(u'a' + session));
        int starts_left = 5;
        for (int i = 0; i < 3; ++i) {
            const std::wstring name = std::to_wstring(session) + L"_" + std::to_wstring(i);
            const std::u16string command =
                u"echo started>" + quoted(name.c_str()) + u"&echo " + text;
            const ULONGLONG before = GetTickCount64();
            std::u16string result;
            do
                result = run(u"-TimeoutSecs=60", command);
            while (result.empty() && !exists(path(name)) && --starts_left > 0);
            EXPECT_EQ(result, text + u"\r")
                << "session " << session << ", command " << i << ", " << GetTickCount64() - before
                << " ms, starts left " << starts_left
                << (exists(path(name)) ? ", the interpreter ran" : ", nothing was started");
        }
    });
}

} // namespace
} // namespace vell::test
