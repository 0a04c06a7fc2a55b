#include "src/host/log_file.h"

#include "src/base/win32_handle.h"
#include "src/host/plugin_state.h"
#include "src/params/line_endings.h"

#include <array>
#include <cstdio>
#include <map>
#include <mutex>

namespace vell::host {
namespace {

constexpr std::size_t longest_line = 1023;

std::wstring executable_path() {
    std::array<wchar_t, 2000> path;
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return length < path.size() ? std::wstring(path.data(), length) : std::wstring();
}

bool server_or_web() {
    const ApplicationType type = plugin_state().application_type;
    return is_server_host(type) || is_web_host(type);
}

// Empty when the folder neither exists nor can be made.
std::wstring make_log_folder() {
    std::wstring folder = log_folder(executable_path(), server_or_web());
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

UniqueFile open_log(const std::wstring& path) {
    return UniqueFile(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL | FILE_FLAG_WRITE_THROUGH, nullptr));
}

class LogFiles {
  public:
    void write(LogChannel channel, std::string_view source, std::string_view text) {
        std::unique_lock lock(mutex_);
        Log& log = log_of(channel);
        if (log.path.empty()) {
            std::fprintf(stderr, "%s\n", log_entry(source, std::string(text)).c_str());
            return;
        }
        const std::string line = log_line_text(local_time_text(), source, std::string(text));
        const UniqueFile file = open_in_turn(log, lock);
        if (!file) {
            report_once(GetLastError());
            return;
        }
        DWORD done = 0;
        if (SetFilePointerEx(file.get(), {}, nullptr, FILE_END))
            WriteFile(file.get(), line.data(), static_cast<DWORD>(line.size()), &done, nullptr);
    }

  private:
    struct Log {
        std::wstring path;
        bool in_use = false; // by someone who was waited for in vain
    };

    Log& log_of(LogChannel channel) {
        Log& log = logs_[{channel, server_or_web()}];
        if (log.path.empty()) {
            if (std::wstring folder = make_log_folder(); !folder.empty())
                log.path = folder.append(log_file_name(channel));
        }
        return log;
    }

    // Another process may be writing its own line at this moment, which is waited for without the
    // lock. One that keeps the file open costs one wait; from then on each line has one try, until
    // the file is free again.
    UniqueFile open_in_turn(Log& log, std::unique_lock<std::mutex>& lock) {
        constexpr ULONGLONG longest_wait_ms = 1000;
        constexpr DWORD pause_ms = 5;
        const ULONGLONG end = GetTickCount64() + longest_wait_ms;
        for (;;) {
            UniqueFile file = open_log(log.path);
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

    void report_once(DWORD error) {
        if (!std::exchange(reported_, true))
            std::fprintf(stderr, "Vell Plug-in could not create permanent log, error code: %lu\n",
                         error);
    }

    std::mutex mutex_;
    std::map<std::pair<LogChannel, bool>, Log> logs_; // kept for the life of the process
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

std::wstring log_folder(std::wstring_view executable, bool server_or_web) {
    const std::size_t end = executable.rfind(L'\\');
    if (end == std::wstring_view::npos)
        return {};
    return std::wstring(executable.substr(0, end + 1))
        .append(server_or_web ? L"Logs\\" : L"Vell Logs\\");
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

void log_line(LogChannel channel, std::string_view source, std::string_view text) {
    static LogFiles files;
    files.write(channel, source, text);
}

void log_line(std::string_view text) {
    const bool web = is_web_host(plugin_state().application_type);
    log_line(web ? LogChannel::Web : LogChannel::Server, plugin_name, text);
}

} // namespace vell::host
