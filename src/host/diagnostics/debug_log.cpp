#include "src/host/diagnostics/debug_log.h"

namespace vell::host {
namespace {

UniqueFile open_temporary_file() {
    std::wstring path(MAX_PATH + 1, L'\0');
    const DWORD length = GetTempPathW(static_cast<DWORD>(path.size()), path.data());
    if (length == 0 || length > MAX_PATH)
        return {};
    path.resize(length);
    path += L"VELLDEBUGLOG.tmp";
    return UniqueFile(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                  CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
}

bool set_position(HANDLE file, std::uint64_t position) {
    return SetFilePointerEx(file, {.QuadPart = static_cast<LONGLONG>(position)}, nullptr,
                            FILE_BEGIN);
}

// Behind the first `size` bytes, over what a failed try may have left there.
bool write_at(HANDLE file, std::uint64_t size, std::string_view bytes) {
    DWORD done = 0;
    return set_position(file, size) &&
           WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr) &&
           done == bytes.size();
}

// What was written to the file, from its start.
std::string read_all(HANDLE file, std::uint64_t size) {
    std::string bytes(size, '\0');
    DWORD done = 0;
    if (!set_position(file, 0) ||
        !ReadFile(file, bytes.data(), static_cast<DWORD>(size), &done, nullptr))
        done = 0;
    bytes.resize(done);
    return bytes;
}

} // namespace

void DebugLog::switch_on() {
    on_ = true;
    add("Log started.");
}

void DebugLog::switch_off() {
    on_ = false;
}

void DebugLog::add(std::string_view line) {
    if (on_)
        add_always(line);
}

void DebugLog::add_always(std::string_view line) {
    const std::lock_guard lock(mutex_);
    if (file_size_ < file_limit)
        append(line);
}

void DebugLog::append(std::string_view line) {
    lines_.append(line).append("\r");
    if (lines_.size() > memory_limit)
        move_to_file();
}

void DebugLog::move_to_file() {
    if (!file_)
        file_ = open_temporary_file();
    if (!file_ || !write_at(file_.get(), file_size_, lines_)) {
        drop_older_half();
        return;
    }
    file_size_ += lines_.size();
    lines_ = file_size_ < file_limit ? "" : "Log full.\r";
}

void DebugLog::drop_older_half() {
    lines_.erase(0, lines_.find('\r', lines_.size() / 2) + 1);
    lines_.insert(0, "Older lines dropped.\r");
}

std::string DebugLog::take() {
    const std::lock_guard lock(mutex_);
    std::string taken = file_ ? read_all(file_.get(), file_size_) : std::string();
    taken += lines_;
    lines_ = {};
    file_.reset();
    file_size_ = 0;
    return taken;
}

DebugLog& debug_log() {
    static DebugLog log;
    return log;
}

} // namespace vell::host
