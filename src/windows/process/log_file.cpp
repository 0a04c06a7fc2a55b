#include "src/windows/process/log_file.h"

#include "src/params/line_endings.h"
#include "src/windows/handle.h"
#include "src/windows/parts.h"
#include "src/windows/storage/path.h"
#include "src/windows/storage/private_items.h"
#include "src/windows/text.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <map>
#include <mutex>
#include <vector>

namespace vell::windows {
namespace {

constexpr std::size_t longest_line = 1023;

std::wstring executable_path() {
    std::array<wchar_t, 2000> path;
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return length < path.size() ? std::wstring(path.data(), length) : std::wstring();
}

// Empty when the folder neither exists nor can be made.
std::wstring make_log_folder(LogFolder which) {
    std::wstring folder = log_folder(executable_path(), which);
    if (!folder.empty() && !CreateDirectoryW(folder.c_str(), nullptr) &&
        GetLastError() != ERROR_ALREADY_EXISTS)
        return {};
    return folder;
}

std::string local_time_text() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    std::array<char, 64> text;
    std::snprintf(text.data(), text.size(), "%04u-%02u-%02u %02u:%02u:%02u", unsigned{now.wYear},
                  unsigned{now.wMonth}, unsigned{now.wDay}, unsigned{now.wHour},
                  unsigned{now.wMinute}, unsigned{now.wSecond});
    return text.data();
}

// "[source] text", the text's line ends as in the file.
std::string log_entry(std::string_view source, std::string text) {
    params::convert_line_endings(text, params::LineEndings::LogFile);
    return std::string("[").append(source).append("] ").append(text);
}

enum class LogUse : std::uint8_t { Append, Rename };

UniqueFile open_log(const std::wstring& path, LogUse use) {
    const bool appends = use == LogUse::Append;
    return UniqueFile(CreateFileW(path.c_str(), appends ? GENERIC_WRITE : DELETE, 0, nullptr,
                                  appends ? OPEN_ALWAYS : OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL | FILE_FLAG_WRITE_THROUGH, nullptr));
}

bool has_room(const UniqueFile& file, std::size_t bytes) {
    LARGE_INTEGER size{};
    return GetFileSizeEx(file.get(), &size) &&
           static_cast<std::uint64_t>(size.QuadPart) + bytes <= log_size_limit;
}

// Renames an open file, in the place of another. Nobody else can have opened it meanwhile, as
// between closing it and renaming it by its path.
bool rename_to(const UniqueFile& file, const std::wstring& path) {
    std::vector<char> room(sizeof(FILE_RENAME_INFO) + path.size() * sizeof(wchar_t));
    auto* const information = reinterpret_cast<FILE_RENAME_INFO*>(room.data());
    information->ReplaceIfExists = TRUE;
    information->FileNameLength = static_cast<DWORD>(path.size() * sizeof(wchar_t));
    path.copy(information->FileName, path.size()); // the zero behind it is there already
    return SetFileInformationByHandle(file.get(), FileRenameInfo, room.data(),
                                      static_cast<DWORD>(room.size()));
}

// Each process has one of its own, under a name that nobody can put something in the place of.
UniqueFile open_overflow_file() {
    const auto folder = temporary_folder();
    const auto name = random_uuid();
    if (!folder || !name)
        return {};
    return create_private_file(*folder + L"VELLDEBUGLOG{" + *name + L"}.tmp", 0,
                               FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE);
}

std::atomic<bool> overflow_is_taken = false;

class Overflow : public files::OverflowFile {
  public:
    explicit Overflow(UniqueFile file) : file_(std::move(file)) {}
    ~Overflow() override { overflow_is_taken = false; }

    bool write(std::uint64_t position, std::string_view bytes) override {
        DWORD done = 0;
        return set_position(position) &&
               WriteFile(file_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &done,
                         nullptr) &&
               done == bytes.size();
    }
    std::string read(std::uint64_t size) override {
        std::string bytes(size, '\0');
        DWORD done = 0;
        if (!set_position(0) ||
            !ReadFile(file_.get(), bytes.data(), static_cast<DWORD>(size), &done, nullptr))
            done = 0;
        bytes.resize(done);
        return bytes;
    }

  private:
    bool set_position(std::uint64_t position) {
        return SetFilePointerEx(file_.get(), {.QuadPart = static_cast<LONGLONG>(position)}, nullptr,
                                FILE_BEGIN);
    }

    UniqueFile file_;
};

class LogFiles : public files::Logs {
  public:
    void append(LogChannel channel, LogFolder folder, std::string_view source,
                std::string_view text) override {
        std::unique_lock lock(mutex_);
        Log& log = log_of(channel, folder);
        if (log.path.empty()) {
            std::fprintf(stderr, "%s\n", log_entry(source, std::string(text)).c_str());
            return;
        }
        const std::string line = log_line_text(local_time_text(), source, std::string(text));
        UniqueFile file = open_in_turn(log, LogUse::Append, lock);
        if (file && !has_room(file, line.size())) {
            file.reset();
            if (!set_aside(log, line.size(), lock))
                return; // lines may be lost, the disk is not to be filled
            file = open_in_turn(log, LogUse::Append, lock);
        }
        if (!file) {
            report_once(GetLastError());
            return;
        }
        DWORD done = 0;
        if (SetFilePointerEx(file.get(), {}, nullptr, FILE_END))
            WriteFile(file.get(), line.data(), static_cast<DWORD>(line.size()), &done, nullptr);
    }

    std::unique_ptr<files::OverflowFile> new_overflow_file() override {
        if (overflow_is_taken.exchange(true))
            return nullptr;
        UniqueFile file = open_overflow_file();
        overflow_is_taken = static_cast<bool>(file);
        return file ? std::make_unique<Overflow>(std::move(file)) : nullptr;
    }

  private:
    struct Log {
        std::wstring path;
        std::wstring old_path;
        bool in_use = false; // by someone who was waited for in vain
    };

    Log& log_of(LogChannel channel, LogFolder folder) {
        Log& log = logs_[{channel, folder}];
        if (log.path.empty()) {
            if (const std::wstring path = make_log_folder(folder); !path.empty()) {
                log.path = path + std::wstring(log_file_name(channel));
                log.old_path = path + old_log_file_name(channel);
            }
        }
        return log;
    }

    // Another process may be writing its own line at this moment, which is waited for without the
    // lock. One that keeps the file open costs one wait; from then on each line has one try, until
    // the file is free again.
    UniqueFile open_in_turn(Log& log, LogUse use, std::unique_lock<std::mutex>& lock) {
        constexpr ULONGLONG longest_wait_ms = 1000;
        constexpr DWORD pause_ms = 5;
        const ULONGLONG end = GetTickCount64() + longest_wait_ms;
        for (;;) {
            UniqueFile file = open_log(log.path, use);
            const DWORD error = file ? ERROR_SUCCESS : GetLastError();
            if (error != ERROR_SHARING_VIOLATION || log.in_use || GetTickCount64() >= end) {
                log.in_use = error == ERROR_SHARING_VIOLATION;
                SetLastError(error);
                return file;
            }
            lock.unlock();
            Sleep(pause_ms);
            lock.lock();
        }
    }

    // Gives the full log its other name. The size is asked for once more: another process may have
    // been faster, and what it put aside is not to be replaced by the few lines since. False where
    // somebody has either file open.
    bool set_aside(Log& log, std::size_t bytes, std::unique_lock<std::mutex>& lock) {
        const UniqueFile file = open_in_turn(log, LogUse::Rename, lock);
        if (!file)
            return GetLastError() == ERROR_FILE_NOT_FOUND; // renamed at this moment
        return has_room(file, bytes) || rename_to(file, log.old_path);
    }

    void report_once(DWORD error) {
        if (!std::exchange(reported_, true))
            std::fprintf(stderr, "Vell Plug-in could not create permanent log, error code: %lu\n",
                         error);
    }

    std::mutex mutex_;
    std::map<std::pair<LogChannel, LogFolder>, Log> logs_; // kept for the life of the process
    bool reported_ = false;
};

} // namespace

std::wstring_view log_file_name(LogChannel channel) {
    switch (channel) {
    case LogChannel::Web:
        return L"Vell Plugin Web Engine.log";
    case LogChannel::Debug:
        return L"VellDebug.log";
    default:
        return L"Vell Plugin FMServer.log";
    }
}

std::wstring old_log_file_name(LogChannel channel) {
    std::wstring name(log_file_name(channel));
    return name.insert(name.rfind(L'.'), L" (old)");
}

std::wstring log_folder(std::wstring_view executable, LogFolder folder) {
    const std::size_t end = executable.rfind(L'\\');
    if (end == std::wstring_view::npos)
        return {};
    return std::wstring(executable.substr(0, end + 1))
        .append(folder == LogFolder::OfServer ? L"Logs\\" : L"Vell Logs\\");
}

std::u16string own_log_folder() {
    return to_utf16(make_log_folder(LogFolder::Own));
}

std::string log_line_text(std::string_view local_time, std::string_view source, std::string text) {
    std::string line =
        std::string(local_time).append(" ").append(log_entry(source, std::move(text)));
    constexpr std::string_view line_end = "\r\n";
    if (line.size() > longest_line - line_end.size()) {
        std::size_t cut = longest_line - line_end.size();
        while (cut > 0 && (static_cast<unsigned char>(line[cut]) & 0xC0) == 0x80)
            --cut; // inside a UTF-8 sequence
        line.resize(cut);
    }
    return line.append(line_end);
}

files::Logs& logs() {
    static LogFiles instance;
    return instance;
}

} // namespace vell::windows
