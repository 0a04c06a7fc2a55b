#include "tests/windows/plugin_fixture.h"

#include "src/base/win32_handle.h"
#include "src/base/win32_text.h"
#include "src/host/dispatcher.h"

#include <filesystem>

namespace vell::test {
namespace {

std::wstring executable_folder() {
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    return path.substr(0, path.rfind(L'\\') + 1);
}

std::wstring log_path(std::wstring_view name) {
    return executable_folder() + L"Logs\\" + std::wstring(name);
}

// Logs of earlier runs are no part of this one.
[[maybe_unused]] const bool old_logs_deleted = [] {
    DeleteFileW(log_path(Plugin::server_log).c_str());
    DeleteFileW(log_path(Plugin::web_log).c_str());
    return true;
}();

} // namespace

TemporaryFolder::TemporaryFolder() {
    wchar_t temporary[MAX_PATH + 1];
    GetTempPathW(MAX_PATH + 1, temporary);
    // Process IDs come again: a name that an ended process left is passed over.
    for (int i = 0;; ++i) {
        folder_ = std::wstring(temporary) + L"vell_test_" + std::to_wstring(GetCurrentProcessId()) +
                  L"_" + std::to_wstring(i) + L"\\";
        if (CreateDirectoryW(folder_.c_str(), nullptr) || GetLastError() != ERROR_ALREADY_EXISTS)
            return;
    }
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(L"\\\\?\\" + folder_, ignored); // long paths too
}

std::wstring TemporaryFolder::path(std::wstring_view name) const {
    return folder_ + std::wstring(name);
}

std::u16string TemporaryFolder::file(std::wstring_view name, std::string_view contents) const {
    const UniqueFile handle(CreateFileW(path(name).c_str(), GENERIC_WRITE, 0, nullptr,
                                        CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD done = 0;
    EXPECT_TRUE(handle) << GetLastError();
    EXPECT_TRUE(WriteFile(handle.get(), contents.data(), static_cast<DWORD>(contents.size()), &done,
                          nullptr));
    return to_utf16(path(name));
}

std::string read_file(const std::wstring& path) {
    const UniqueFile handle(CreateFileW(path.c_str(), GENERIC_READ,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!handle)
        return {};
    std::string bytes(GetFileSize(handle.get(), nullptr), '\0');
    DWORD done = 0;
    ReadFile(handle.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr);
    bytes.resize(done);
    return bytes;
}

Plugin::Plugin() : live_objects_(StandIn_TotalLiveObjects()) {
    for (const wchar_t* name : {server_log, web_log})
        log_positions_[name] = read_file(log_path(name)).size();
}

Plugin::~Plugin() {
    host_.reset();
    host::replace_licence_checks(nullptr);
    StandIn_Reset();
    EXPECT_EQ(StandIn_TotalLiveObjects(), live_objects_);
}

std::int64_t Plugin::start(PluginHostOptions options) {
    host_.reset();
    host_ = std::make_unique<PluginHost>(options);
    host_->attach(FMExternCallProc, GetModuleHandleW(nullptr));
    return host_->start_up();
}

std::u16string Plugin::call(std::u16string_view function, std::vector<Value> arguments) {
    for (const console::RegisteredFunction& candidate : host_->functions())
        if (candidate.name == function &&
            static_cast<std::size_t>(candidate.min_arguments) <= arguments.size() &&
            static_cast<std::size_t>(candidate.max_arguments) >= arguments.size())
            return call_id(candidate.id, std::move(arguments));
    return u"NOT REGISTERED";
}

std::u16string Plugin::call_id(std::int16_t id, std::vector<Value> arguments) {
    const auto result = host_->call_body(id, host::dispatch, arguments);
    if (!result)
        return u"ERRCODE: " + std::u16string(result.error().begin(), result.error().end());
    return console::to_value(result->get()).as_text();
}

std::vector<std::string> Plugin::new_log_lines(const std::wstring& name) {
    const std::string log = read_file(log_path(name));
    std::vector<std::string> lines;
    std::size_t position = log_positions_[name];
    for (std::size_t end; (end = log.find("\r\n", position)) != std::string::npos;) {
        constexpr std::size_t time_length = std::string_view("2020-12-31 23:59:59 ").size();
        lines.push_back(log.substr(position + time_length, end - position - time_length));
        position = end + 2;
    }
    EXPECT_EQ(position, log.size()) << "a line without an end";
    log_positions_[name] = log.size();
    return lines;
}

} // namespace vell::test
