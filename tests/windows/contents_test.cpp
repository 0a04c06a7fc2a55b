// VlFile_GetContents on the system's own files, through the host.
#include "src/windows/system.h"
#include "tests/windows/plugin_fixture.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <thread>

namespace vell::test {
namespace {

class Contents : public PluginWithFolder {
  protected:
    std::u16string contents(const char16_t* switches, const std::u16string& path,
                            std::vector<Value> range = {}) {
        std::vector<Value> arguments{Value(switches), Value(path)};
        arguments.insert(arguments.end(), range.begin(), range.end());
        return call(u"VlFile_GetContents", arguments);
    }
};

TEST_F(Contents, ReportsWhatKeepsItFromReading) {
    const std::u16string file = folder.file(L"some.txt", "12345");
    EXPECT_EQ(contents(u"", path(L"missing.txt")), u"$$-43");
    EXPECT_EQ(contents(u"", path(L"none\\missing.txt")), u"$$-120");
    {
        const UniqueFile held = open_file(file, GENERIC_READ, FILE_SHARE_READ);
        ASSERT_TRUE(held);
        EXPECT_EQ(contents(u"", file), u"$$-47");
    }
    EXPECT_EQ(contents(u"", file), u"12345");
    EXPECT_TRUE(DeleteFileW(as_wide(file))); // nothing holds it
}

TEST_F(Contents, TakesALongPath) {
    EXPECT_EQ(contents(u"", folder.file(deep_name + L"\u65E5 \xD83D\xDE00.txt", "found")),
              u"found");
}

TEST_F(Contents, SeeksInAFileAbove4GiB) {
    const std::u16string path = folder.file(L"huge.bin", "");
    {
        const UniqueFile file = open_file(path, GENERIC_WRITE);
        for (const auto& [offset, mark] : {std::pair{std::int64_t{2147483640}, "two GiB"},
                                           std::pair{std::int64_t{5368709120} - 4, "tail"}}) {
            set_length(file, offset);
            DWORD done = 0;
            ASSERT_TRUE(
                WriteFile(file.get(), mark, static_cast<DWORD>(strlen(mark)), &done, nullptr));
        }
    }
    EXPECT_EQ(contents(u"", path, {number(2147483640), number(7)}), u"two GiB");
    // The access layer itself reaches every byte.
    const auto file = windows::system().files().open({path, {}}, files::Permission::Read);
    ASSERT_TRUE(file);
    EXPECT_EQ(*(*file)->size(), 5368709120u);
    std::array<char, 8> buffer{};
    ASSERT_TRUE((*file)->seek(files::SeekFrom::End, -4));
    EXPECT_EQ(*(*file)->read(buffer), 4u);
    EXPECT_STREQ(buffer.data(), "tail");
    EXPECT_EQ((*file)->seek(files::SeekFrom::Start, -1).error(), ErrorCode::BeforeStart);
}

// A pipe has no length; its bytes come in pieces of the writer's choosing.
std::thread serve_pipe(const std::wstring& name, std::string bytes) {
    const HANDLE pipe = CreateNamedPipeW(name.c_str(), PIPE_ACCESS_OUTBOUND,
                                         PIPE_TYPE_BYTE | PIPE_WAIT, 1, 4096, 4096, 0, nullptr);
    EXPECT_NE(pipe, INVALID_HANDLE_VALUE);
    return std::thread([pipe, bytes = std::move(bytes)] {
        ConnectNamedPipe(pipe, nullptr);
        DWORD done = 0;
        for (std::size_t i = 0; i < bytes.size(); i += 1000)
            WriteFile(pipe, bytes.data() + i,
                      static_cast<DWORD>(std::min<std::size_t>(1000, bytes.size() - i)), &done,
                      nullptr);
        FlushFileBuffers(pipe);
        CloseHandle(pipe);
    });
}

TEST_F(Contents, ReadsDevicesOfUnknownLength) {
    const std::wstring name = L"\\\\.\\pipe\\vell_test_" + std::to_wstring(GetCurrentProcessId());
    std::string bytes;
    for (int i = 0; i < 40'000; ++i)
        bytes += std::to_string(i % 10) + "\xC3\xA9";
    const std::u16string path = to_utf16(name);
    std::thread writer = serve_pipe(name, bytes);
    const std::u16string all = contents(u"-Encoding=UTF8", path);
    writer.join();
    EXPECT_EQ(all.size(), 80'000u);
    EXPECT_TRUE(all.ends_with(u"8\u00E99\u00E9"));
    EXPECT_EQ(contents(u"", u"NUL"), u"");
}

TEST_F(Contents, CreateNewNeverReplaces) {
    files::FileSystem& system = windows::system().files();
    const files::NativePath path{this->path(L"new.txt"), {}};
    ASSERT_TRUE(system.create_new(path));
    const auto file = system.open(path, files::Permission::Write);
    ASSERT_TRUE(file);
    ASSERT_TRUE((*file)->write("abcdef"));
    ASSERT_TRUE((*file)->seek(files::SeekFrom::Start, 2));
    ASSERT_TRUE((*file)->set_end_of_file());
    ASSERT_TRUE((*file)->close());
    EXPECT_EQ(system.create_new(path).error(), ErrorCode::AlreadyExists);
    EXPECT_EQ(read_file(folder.path(L"new.txt")), "ab");
    EXPECT_EQ(system.create_new({this->path(), {}}).error(), ErrorCode::AlreadyExists);
}

TEST_F(Contents, ServesEightSessionsAtOnce) {
    start({.application_type = server});
    std::atomic<int> wrong = 0;
    std::atomic<int> calls = 0;
    const ULONGLONG end = GetTickCount64() + 3000;
    in_threads(8, [&](std::size_t i) {
        const std::string bytes(1000 * (i + 1), static_cast<char>('a' + i));
        const std::u16string file = folder.file(L"session" + std::to_wstring(i), bytes);
        while (GetTickCount64() < end) {
            wrong +=
                contents(u"-Encoding=UTF8", file) != std::u16string(bytes.begin(), bytes.end());
            wrong += contents(u"", file + u"none") != u"$$-43";
            calls += 2;
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_GE(calls, 16);
    // Each call wrote two whole lines, whatever the others did.
    const std::vector<std::string> lines = new_log_lines();
    std::size_t call_lines = 0;
    for (const std::string& line : lines)
        call_lines += line.starts_with("[Vell File Plug-In] External function ");
    EXPECT_EQ(call_lines, static_cast<std::size_t>(2 * calls));
}

} // namespace
} // namespace vell::test
