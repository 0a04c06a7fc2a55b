// Commands as processes of the system.
#include "src/windows/handle.h"
#include "src/windows/parts.h"
#include "src/windows/text.h"

#include <array>
#include <span>
#include <vector>

namespace vell::windows {

using namespace files;

namespace {

struct Pipe {
    UniqueHandle read_end;
    UniqueHandle write_end;
};

SECURITY_ATTRIBUTES inheritable() {
    return {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
}

Result<Pipe> inheritable_pipe() {
    constexpr DWORD room = 256 * 1024; // what a command writes between two looks should fit
    SECURITY_ATTRIBUTES security = inheritable();
    HANDLE read_end = nullptr;
    HANDLE write_end = nullptr;
    if (!CreatePipe(&read_end, &write_end, &security, room))
        return Failure{last_error()};
    Pipe pipe;
    pipe.read_end = UniqueHandle(read_end);
    pipe.write_end = UniqueHandle(write_end);
    return pipe;
}

Result<UniqueFile> inheritable_nul() {
    SECURITY_ATTRIBUTES security = inheritable();
    UniqueFile nul(CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &security,
                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!nul)
        return Failure{last_error()};
    return nul;
}

// Which handles a process inherits, whatever else in this one is inheritable: other sessions start
// processes at the same time, and a foreign handle to a pipe would keep its reader waiting.
class InheritedHandles {
  public:
    InheritedHandles() = default;
    InheritedHandles(const InheritedHandles&) = delete;
    InheritedHandles& operator=(const InheritedHandles&) = delete;
    ~InheritedHandles() {
        if (list_)
            DeleteProcThreadAttributeList(list_);
    }

    Result<void> set(std::vector<HANDLE> handles) {
        handles_ = std::move(handles);
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        room_.resize(size);
        auto* list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(room_.data());
        if (!InitializeProcThreadAttributeList(list, 1, 0, &size))
            return Failure{last_error()};
        list_ = list;
        if (!UpdateProcThreadAttribute(list_, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles_.data(),
                                       handles_.size() * sizeof(HANDLE), nullptr, nullptr))
            return Failure{last_error()};
        return {};
    }
    LPPROC_THREAD_ATTRIBUTE_LIST list() const { return list_; }

  private:
    std::vector<HANDLE> handles_;
    std::vector<char> room_;
    LPPROC_THREAD_ATTRIBUTE_LIST list_ = nullptr;
};

class Win32Command : public RunningCommand {
  public:
    // With the last handle to a job end the processes in it.
    Win32Command(UniqueHandle process, UniqueHandle output, UniqueHandle job)
        : process_(std::move(process)), output_(std::move(output)), job_(std::move(job)) {}

    Result<bool> has_ended() override {
        DWORD exit_code = 0;
        if (!GetExitCodeProcess(process_.get(), &exit_code))
            return Failure{last_error()};
        // A command may end with the number that stands for a running one.
        const bool has_ended = exit_code != STILL_ACTIVE || signalled_;
        if (has_ended)
            job_.reset(); // others that it has started are not waited for
        return has_ended;
    }

    void wait(std::uint32_t milliseconds) override {
        if (signalled_)
            Sleep(milliseconds);
        else
            signalled_ = WaitForSingleObject(process_.get(), milliseconds) == WAIT_OBJECT_0;
    }

    std::optional<std::size_t> waiting_output() override {
        DWORD waiting = 0;
        if (!PeekNamedPipe(output_.get(), nullptr, 0, nullptr, &waiting, nullptr))
            return std::nullopt;
        return waiting;
    }

    Result<std::size_t> read(std::span<char> buffer) override {
        DWORD done = 0;
        if (!ReadFile(output_.get(), buffer.data(), static_cast<DWORD>(buffer.size()), &done,
                      nullptr)) {
            const DWORD error = GetLastError();
            if (error == ERROR_BROKEN_PIPE)
                return std::size_t{0};
            if (error != ERROR_MORE_DATA)
                return Failure{error_from_win32(static_cast<std::int32_t>(error))};
        }
        return std::size_t{done};
    }

  private:
    UniqueHandle process_;
    UniqueHandle output_;
    UniqueHandle job_;
    bool signalled_ = false; // the process has ended
};

Result<std::wstring> interpreter_path() {
    std::array<wchar_t, 2000> folder{};
    const UINT length = GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
    if (length == 0 || length >= folder.size()) {
        const ErrorCode error = length == 0 ? last_error() : ErrorCode::Ok;
        return Failure{error == ErrorCode::Ok ? ErrorCode::SystemFolderUnknown : error};
    }
    return std::wstring(folder.data(), length) + L"\\cmd.exe";
}

STARTUPINFOEXW start_up(const CommandSettings& settings) {
    STARTUPINFOEXW info{};
    GetStartupInfoW(&info.StartupInfo);
    info.StartupInfo.cb = sizeof info;
    info.StartupInfo.dwFlags = STARTF_USESHOWWINDOW;
    // A window for output that is not the result shows it.
    if (settings.wait_on_result || !settings.show_window)
        info.StartupInfo.dwFlags |= STARTF_USESTDHANDLES;
    info.StartupInfo.wShowWindow = settings.show_window ? SW_SHOWNORMAL : SW_HIDE;
    // What this process was given by its own starter is not the command's.
    info.StartupInfo.lpReserved = nullptr;
    info.StartupInfo.lpTitle = nullptr;
    info.StartupInfo.cbReserved2 = 0;
    info.StartupInfo.lpReserved2 = nullptr;
    return info;
}

// A job whose processes end with its last handle.
Result<UniqueHandle> new_job() {
    UniqueHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (!job || !SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits,
                                         sizeof limits))
        return Failure{last_error()};
    return job;
}

// The command holds its job itself, so that its children end with it whoever waits for it.
Result<void> put_into_job(HANDLE process, const UniqueHandle& job) {
    HANDLE of_command = nullptr;
    if (!AssignProcessToJobObject(job.get(), process) ||
        !DuplicateHandle(GetCurrentProcess(), job.get(), process, &of_command, 0, FALSE,
                         DUPLICATE_SAME_ACCESS))
        return Failure{last_error()};
    return {};
}

// In the job, where there is one, before it runs.
Result<UniqueHandle> create_process(const std::wstring& interpreter, std::wstring command_line,
                                    STARTUPINFOEXW& info, const UniqueHandle& job) {
    PROCESS_INFORMATION process{};
    const DWORD suspended = job ? CREATE_SUSPENDED : 0;
    if (!CreateProcessW(interpreter.c_str(), command_line.data(), nullptr, nullptr, TRUE,
                        CREATE_NEW_CONSOLE | EXTENDED_STARTUPINFO_PRESENT | suspended, nullptr,
                        nullptr, &info.StartupInfo, &process))
        return Failure{last_error()};
    const UniqueHandle thread(process.hThread);
    UniqueHandle owner(process.hProcess);
    if (!job)
        return owner;
    if (const Result<void> in_job = put_into_job(owner.get(), job); !in_job) {
        TerminateProcess(owner.get(), 1);
        return Failure{in_job.error()};
    }
    ResumeThread(thread.get());
    return owner;
}

Result<std::unique_ptr<RunningCommand>> start_command(const std::u16string& command,
                                                      const CommandSettings& settings) {
    const std::wstring interpreter = VELL_TRY(interpreter_path());
    Pipe input = VELL_TRY(inheritable_pipe());
    Pipe output = VELL_TRY(inheritable_pipe());
    const UniqueFile nul = VELL_TRY(inheritable_nul());

    STARTUPINFOEXW info = start_up(settings);
    info.StartupInfo.hStdInput = input.read_end.get();
    info.StartupInfo.hStdError = nul.get();
    // Nobody reads the output of a command that is not waited for: a pipe would break under it.
    info.StartupInfo.hStdOutput = settings.wait_on_result ? output.write_end.get() : nul.get();
    std::vector<HANDLE> handles{input.read_end.get(), nul.get()};
    if (settings.wait_on_result)
        handles.push_back(output.write_end.get());
    InheritedHandles inherited;
    VELL_TRY(inherited.set(std::move(handles)));
    info.lpAttributeList = inherited.list();

    UniqueHandle job;
    if (settings.ends_with_children)
        job = VELL_TRY(new_job());
    UniqueHandle process = VELL_TRY(
        create_process(interpreter, to_wide(interpreter_call) + to_wide(command), info, job));
    if (!settings.wait_on_result)
        job.reset(); // the command's own handle is enough
    // This function's ends of the pipes go with it: the command finds its input at its end, and the
    // output ends when nobody else writes to it.
    return std::unique_ptr<RunningCommand>(std::make_unique<Win32Command>(
        std::move(process), std::move(output.read_end), std::move(job)));
}

class Win32Commands : public Commands {
  public:
    Result<std::unique_ptr<RunningCommand>> start(const std::u16string& command,
                                                  const CommandSettings& settings) override {
        return start_command(command, settings);
    }
};

} // namespace

Commands& commands() {
    static Win32Commands instance;
    return instance;
}

} // namespace vell::windows
