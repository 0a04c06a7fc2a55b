// Messages and calls on several threads, and an unloading meanwhile.
#include "src/host/entry/script_starter.h"
#include "tests/windows/plugin_fixture.h"

#include <condition_variable>
#include <mutex>

namespace vell::test {
namespace {

using host::ScriptStarter;

std::atomic<int> started[2];

template <int number>
fm::Errcode start_script(const fm::Text*, const fm::Text*, std::uint8_t, const fm::Data*) {
    ++started[number];
    return 0;
}

host::CallRecord record_of(int number, bool is_unsafe) {
    host::CallRecord record{};
    record.start_script = number == 0 ? &start_script<0> : &start_script<1>;
    record.unsafe = is_unsafe;
    return record;
}

// Where threads wait for each other. That of the standard library sometimes wakes nobody here.
class Meeting {
  public:
    explicit Meeting(int threads) : threads_(threads), missing_(threads) {}

    void arrive_and_wait() {
        std::unique_lock lock(mutex_);
        if (--missing_ == 0) {
            missing_ = threads_;
            ++round_;
            everybody_.notify_all();
            return;
        }
        const int round = round_;
        everybody_.wait(lock, [&] { return round_ != round; });
    }

  private:
    const int threads_;
    std::mutex mutex_;
    std::condition_variable everybody_;
    int missing_;
    int round_ = 0;
};

TEST_F(Plugin, EachThreadGoesByTheRecordOfItsOwnMessage) {
    start();
    ScriptStarter& scripts = host::script_starter();
    std::atomic<int> wrong = 0;
    Meeting together(4);
    for (std::atomic<int>& count : started)
        count = 0;
    in_threads(4, [&](std::size_t i) {
        const int own = static_cast<int>(i % 2);
        wrong += scripts.is_callable(); // nothing is known on this thread
        {
            const ScriptStarter::ServedMessage served(record_of(own, i == 2));
            together.arrive_and_wait();
            wrong += scripts.is_callable() != (i != 2);
            const int before = started[own];
            wrong += !scripts.start({u"file", u"script"}, u"parameter") || started[own] == before;
            together.arrive_and_wait();
            {
                const ScriptStarter::ServedMessage inner(record_of(1 - own, true));
                wrong += scripts.is_callable();
            }
            wrong += scripts.is_callable() != (i != 2);
        }
        wrong += scripts.is_callable() != (i != 2); // for drops between messages
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(started[0], 2);
    EXPECT_EQ(started[1], 2);
}

// The plug-in as a host loads it: shut down and unloaded while a call reads from a pipe.
TEST(PluginFile, StaysLoadedUntilItsLastCallHasEnded) {
    const wchar_t* const file = L"VellFile.fmx64";
    ASSERT_FALSE(GetModuleHandleW(file)) << "another test keeps it loaded";
    PluginHost host({.application_type = server});
    ASSERT_TRUE(host.load(executable_folder() + file));
    host.start_up();
    const console::RegisteredFunction reading = *host.find_function(u"VlFile_GetContents");
    const std::wstring name = L"\\\\.\\pipe\\vell_test_" + std::to_wstring(GetCurrentProcessId());
    UniqueFile pipe(CreateNamedPipeW(name.c_str(), PIPE_ACCESS_OUTBOUND, PIPE_TYPE_BYTE | PIPE_WAIT,
                                     1, 4096, 4096, 0, nullptr));
    ASSERT_TRUE(pipe);
    std::u16string text;
    std::thread caller([&] {
        const Value arguments[] = {Value(u"-Encoding=UTF8"), Value(to_utf16(name))};
        if (const auto result = host.call(reading, arguments))
            text = result->as_text();
    });
    ConnectNamedPipe(pipe.get(), nullptr);
    host.shut_down();
    FreeLibrary(GetModuleHandleW(file));
    Sleep(100);
    EXPECT_TRUE(GetModuleHandleW(file));
    DWORD done = 0;
    EXPECT_TRUE(WriteFile(pipe.get(), "late", 4, &done, nullptr));
    pipe.reset();
    caller.join();
    EXPECT_EQ(text, u"late");
    const ULONGLONG end = GetTickCount64() + 20'000;
    while (GetModuleHandleW(file) && GetTickCount64() < end)
        Sleep(50);
    EXPECT_FALSE(GetModuleHandleW(file));
}

} // namespace
} // namespace vell::test
