// The plug-in's file with a policy beside it, as a server loads it.
#include "src/base/utf8.h"
#include "tests/windows/links.h"
#include "tests/windows/plugin_fixture.h"

#include <algorithm>

namespace vell::test {
namespace {

constexpr const char16_t* refused = u"$$-4225";

class PolicyOfAServer : public ::testing::Test {
  protected:
    // "in" may be read, "in\out" written, and "secret" neither.
    PolicyOfAServer() {
        folder_.file(L"in\\a.txt", "open");
        folder_.file(L"secret\\b.txt", "closed");
        folder_.subfolder(L"in\\out");
        folder_.subfolder(L"logs");
        folder_.subfolder(L"plugin");
        EXPECT_TRUE(CopyFileW((executable_folder() + L"VellFile.fmx64").c_str(),
                              folder_.path(L"plugin\\VellFile.fmx64").c_str(), TRUE));
    }
    ~PolicyOfAServer() override { stop(); }

    // `more` follows the roots and the log in the policy's file.
    void start(const std::string& more = {}) {
        const std::string roots = R"({"readRoots": [")" + json(L"in") + R"("], "writeRoots": [")" +
                                  json(L"in\\out") + R"("], "audit": {"folder": ")" +
                                  json(L"logs") + R"("})";
        start_with(roots + more + "}");
    }
    void start_with(const std::string& policy) {
        folder_.file(L"plugin\\VellFile.policy.json", policy);
        host_ = std::make_unique<PluginHost>(PluginHostOptions{.application_type = server});
        ASSERT_TRUE(host_->load(folder_.path(L"plugin\\VellFile.fmx64")));
        host_->start_up();
    }
    void stop() {
        if (host_)
            host_->shut_down();
        host_.reset();
    }

    std::u16string call(std::u16string_view function, std::vector<Value> arguments) {
        const auto result = host_->call(*host_->find_function(function), arguments);
        return result ? result->as_text() : u"?";
    }
    std::u16string path(std::wstring_view name) const { return to_utf16(folder_.path(name)); }

    std::string log() const { return read_file(folder_.path(L"logs\\VellFile.audit.jsonl")); }
    // Whether a line of it has all of these, once the plug-in has ended and written it.
    bool logged(std::initializer_list<std::string_view> parts) const {
        const std::string text = log();
        for (std::string_view rest = text; !rest.empty();) {
            const std::string_view line = rest.substr(0, rest.find('\n'));
            rest.remove_prefix(std::min(rest.size(), line.size() + 1));
            if (std::ranges::all_of(parts, [&](auto part) { return line.contains(part); }))
                return true;
        }
        return false;
    }

    TemporaryFolder folder_;

  private:
    std::string json(std::wstring_view name) const {
        std::string text;
        for (const wchar_t c : folder_.path(name))
            text += c == L'\\' ? "\\\\" : std::string(1, static_cast<char>(c));
        return text;
    }

    std::unique_ptr<PluginHost> host_;
};

TEST_F(PolicyOfAServer, NothingLeadsOutOfTheRoots) {
    ASSERT_TRUE(make_link(folder_.path(L"in\\link"), folder_.path(L"secret")));
    ASSERT_TRUE(make_link(folder_.path(L"in\\out\\link"), folder_.path(L"secret")));
    wchar_t short_name[MAX_PATH];
    GetShortPathNameW(folder_.path(L"secret").c_str(), short_name, MAX_PATH);
    start();
    EXPECT_EQ(call(u"VlFile_GetContents", {u"", Value(path(L"in\\a.txt"))}), u"open");
    for (const std::u16string& outside :
         {path(L"secret\\b.txt"), path(L"in\\..\\secret\\b.txt"), path(L"in\\link\\b.txt"),
          to_utf16(short_name) + u"\\b.txt", u"\\\\?\\" + path(L"in\\a.txt"),
          path(L"in\\a.txt") + u":stream", path(L"in\\COM1"), std::u16string(u"COM1"),
          std::u16string(u"\\\\localhost\\share\\b.txt")})
        EXPECT_EQ(call(u"VlFile_GetContents", {u"", Value(outside)}), refused)
            << utf8_from_utf16(outside);

    EXPECT_EQ(call(u"VlFile_ExportToFile", {u"", u"x", Value(path(L"in\\out\\new.txt"))}), u"0");
    for (const wchar_t* outside : {L"in\\new.txt", L"in\\out\\link\\new.txt", L"secret\\new.txt"}) {
        EXPECT_EQ(call(u"VlFile_ExportToFile", {u"", u"x", Value(path(outside))}), refused);
        EXPECT_EQ(call(u"VlFile_CopyFile", {u"", Value(path(L"in\\a.txt")), Value(path(outside))}),
                  refused);
        EXPECT_FALSE(exists(path(outside)));
    }
    EXPECT_EQ(call(u"VlFile_DeleteFile", {u"", Value(path(L"in\\out\\link\\b.txt"))}), refused);
    EXPECT_EQ(read_file(folder_.path(L"secret\\b.txt")), "closed");

    stop();
    EXPECT_TRUE(logged({R"("event":"start")"})) << log();
    EXPECT_TRUE(logged({R"("function":"VlFile_GetContents")", R"("result":0)", R"(\\in\\a.txt")"}))
        << log();
    EXPECT_TRUE(logged({R"("function":"VlFile_GetContents")", R"("refused":"path")",
                        R"(\\in\\link\\b.txt")", R"(\\secret\\b.txt")"}))
        << log();
    EXPECT_TRUE(logged({R"("refused":"device")"})) << log();
    EXPECT_TRUE(logged({R"("written":[)", R"(\\out\\new.txt")", R"("result":0)"})) << log();
}

// What works on folders looks at those above, too, up to the disk's.
TEST_F(PolicyOfAServer, FoldersAreMadeCopiedMovedAndDeletedInTheRoots) {
    start();
    const auto on = [&](std::u16string_view function, std::u16string_view switches,
                        const wchar_t* source, const wchar_t* target) {
        std::vector<Value> arguments{Value(switches), Value(path(source))};
        if (target)
            arguments.push_back(Value(path(target)));
        return call(function, arguments);
    };
    EXPECT_EQ(on(u"VlFile_CreateFolder", u"", L"in\\out\\1\\2\\3\\4\\5", nullptr), u"0");
    EXPECT_EQ(on(u"VlFile_CopyFolder", u"", L"in\\out\\1", L"in\\out\\new\\copy"), u"0");
    EXPECT_EQ(on(u"VlFile_MoveFolder", u"", L"in\\out\\1", L"in\\out\\moved"), u"0");
    EXPECT_EQ(on(u"VlFile_CreateZip", u"", L"in\\out\\moved", L"in\\out\\a.zip"), u"0");
    EXPECT_EQ(on(u"VlFile_UnZip", u"-DontCreateArchiveFolder", L"in\\out\\a.zip", L"in\\out\\new"),
              u"0");
    EXPECT_EQ(on(u"VlFile_DeleteFolder", u"-deleteAllSubFoldersAndAllContents noWarning",
                 L"in\\out\\moved", nullptr),
              u"0");
    EXPECT_TRUE(exists(path(L"in\\out\\new\\copy\\2\\3\\4\\5")));
    EXPECT_TRUE(exists(path(L"in\\out\\new\\moved\\2\\3\\4\\5")));
    EXPECT_FALSE(exists(path(L"in\\out\\1")));
    EXPECT_FALSE(exists(path(L"in\\out\\moved")));

    EXPECT_EQ(on(u"VlFile_CreateFolder", u"", L"in\\new\\2", nullptr), refused);
    EXPECT_EQ(on(u"VlFile_CopyFolder", u"", L"in\\out\\new", L"in\\copy"), refused);
    EXPECT_EQ(on(u"VlFile_MoveFolder", u"", L"in\\out\\new", L"in\\moved"), refused);
    EXPECT_EQ(on(u"VlFile_DeleteFolder", u"-deleteAllSubFoldersAndAllContents noWarning",
                 L"in\\out", nullptr),
              refused);
    EXPECT_TRUE(exists(path(L"in\\out\\new\\copy")));
    EXPECT_FALSE(exists(path(L"in\\new")) || exists(path(L"in\\copy")));
}

TEST_F(PolicyOfAServer, DeniedFunctionsAndLimitsEndACall) {
    start(R"(, "deny": ["VlFile_Launch"], "limits": {"archiveBytes": 5000, "archiveEntries": 3,
              "commandOutputBytes": 100})");
    EXPECT_EQ(call(u"VlFile_Launch", {u"", Value(path(L"in\\a.txt"))}), refused);
    EXPECT_EQ(call(u"VlFile_ExecuteShell", {u"", u"echo short"}), u"short\r");
    EXPECT_EQ(call(u"VlFile_ExecuteShell", {u"", Value(u"echo " + std::u16string(200, u'x'))}),
              refused);

    const auto expand = [&](std::size_t length, int files) {
        for (int i = 0; i < files; ++i)
            folder_.file(L"in\\tree\\" + std::to_wstring(i), std::string(length, 'x'));
        const std::u16string archive = path(L"in\\out\\tree.zip");
        EXPECT_EQ(call(u"VlFile_CreateZip",
                       {u"-DontAddEnclosingFolder", Value(path(L"in\\tree")), Value(archive)}),
                  u"0");
        const std::u16string result =
            call(u"VlFile_UnZip", {u"-DontCreateArchiveFolder -OverwriteExisting", Value(archive),
                                   Value(path(L"in\\out"))});
        EXPECT_EQ(call(u"VlFile_DeleteFile", {u"", Value(archive)}), u"0");
        return result;
    };
    EXPECT_EQ(expand(6000, 1), refused); // of few bytes that become many
    EXPECT_FALSE(exists(path(L"in\\out\\0")));
    EXPECT_EQ(expand(10, 3), u"0");
    EXPECT_TRUE(exists(path(L"in\\out\\2")));
    EXPECT_EQ(expand(10, 4), refused);

    stop();
    EXPECT_TRUE(logged({R"("function":"VlFile_Launch")", R"("refused":"function")"})) << log();
    EXPECT_TRUE(logged({R"("function":"VlFile_UnZip")", R"("refused":"limit")"})) << log();
    EXPECT_TRUE(
        logged({R"("function":"VlFile_ExecuteShell")", R"("refused":"commandOutputBytes")"}));
    EXPECT_FALSE(logged({"echo"}));
}

TEST_F(PolicyOfAServer, ACommandsChildrenEndWithIt) {
    start(R"(, "limits": {"endCommandChildren": true})");
    const std::u16string marks = u">\"" + path(L"in\\late.txt") + u"\"";
    EXPECT_EQ(call(u"VlFile_ExecuteShell",
                   {u"", Value(u"start /b cmd /c \"ping -n 4 127.0.0.1 >NUL&echo late" + marks +
                               u"\"&echo early")}),
              u"early\r");
    Sleep(6'000);
    EXPECT_FALSE(exists(path(L"in\\late.txt")));
}

TEST_F(PolicyOfAServer, APolicyThatCannotBeReadAllowsNothing) {
    start_with(R"({"readRoots": ["C:\\"], "readRoot": []})");
    EXPECT_EQ(call(u"VlFile_GetContents", {u"", Value(path(L"in\\a.txt"))}), refused);
    EXPECT_EQ(call(u"VlFile_ExecuteShell", {u"", u"echo x"}), refused);
    EXPECT_FALSE(call(u"VlFile_Version", {u""}).empty());
    EXPECT_NE(call(u"VlFile_Version", {u""}), refused);
}

} // namespace
} // namespace vell::test
