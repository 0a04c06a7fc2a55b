#include "console/selftest/child_process.h"

#include "src/windows/handle.h"

#include <cstdio>
#include <fstream>
#include <iterator>

namespace vell::selftest {
namespace {

UniqueHandle new_job() {
    UniqueHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

UniqueFile inheritable_file(const std::filesystem::path& path, DWORD access, DWORD creation) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    return UniqueFile(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  &inheritable, creation, FILE_ATTRIBUTE_NORMAL, nullptr));
}

std::filesystem::path error_file(const ChildCommand& command) {
    return command.output.wstring() + L".err";
}

struct Started {
    UniqueHandle process;
    UniqueHandle job;
    DWORD error = 0;
};

Started start(const ChildCommand& command) {
    const UniqueFile input = inheritable_file(L"NUL", GENERIC_READ, OPEN_EXISTING);
    const UniqueFile output = inheritable_file(command.output, GENERIC_WRITE, CREATE_ALWAYS);
    const UniqueFile errors = inheritable_file(error_file(command), GENERIC_WRITE, CREATE_ALWAYS);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.get();
    startup.hStdOutput = output.get();
    startup.hStdError = errors.get();
    std::wstring line = L"\"" + command.program.wstring() + L"\" " + command.arguments;
    PROCESS_INFORMATION process{};
    Started started;
    started.job = new_job();
    if (!CreateProcessW(command.program.c_str(), line.data(), nullptr, nullptr, TRUE,
                        CREATE_SUSPENDED, nullptr, command.folder.c_str(), &startup, &process)) {
        started.error = GetLastError();
        return started;
    }
    started.process = UniqueHandle(process.hProcess);
    const UniqueHandle thread(process.hThread);
    AssignProcessToJobObject(started.job.get(), process.hProcess);
    ResumeThread(thread.get());
    return started;
}

} // namespace

ChildEnd run_child(const ChildCommand& command) {
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    ChildEnd end;
    {
        const Started started = start(command);
        end.error = started.error;
        if (!started.process)
            return end;
        const auto limit = std::chrono::milliseconds(command.limit).count();
        if (WaitForSingleObject(started.process.get(), static_cast<DWORD>(limit)) == WAIT_TIMEOUT) {
            end.was_stopped = true;
            TerminateJobObject(started.job.get(), 1);
            TerminateProcess(started.process.get(), 1); // where there are no jobs
            WaitForSingleObject(started.process.get(), 10'000);
        }
        GetExitCodeProcess(started.process.get(), &end.exit_code);
    }
    end.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    end.output = read_file(command.output);
    end.errors = read_file(error_file(command));
    return end;
}

std::string end_text(const ChildEnd& end, std::chrono::seconds limit) {
    char text[80];
    if (end.error != 0)
        std::snprintf(text, sizeof text, "the program could not be started (error %lu)", end.error);
    else if (end.was_stopped)
        std::snprintf(text, sizeof text, "stopped after %lld seconds",
                      static_cast<long long>(limit.count()));
    else
        std::snprintf(text, sizeof text, "the program ended with 0x%08lX", end.exit_code);
    return text;
}

std::string read_file(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace vell::selftest
