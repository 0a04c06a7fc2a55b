#include "console/host/host_services.h"

#include "console/host/host_window.h"
#include "console/host/wide_text.h"
#include "console/model/unicode.h"

#include <windows.h>

#include <shlobj.h>

namespace vell::console {

namespace {

// "C:\dir\" as the host writes the path of a folder: "/C:/dir/".
std::u16string folder_path(std::wstring path) {
    for (wchar_t& unit : path)
        unit = unit == L'\\' ? L'/' : unit;
    if (!path.ends_with(L'/'))
        path += L'/';
    return u"/" + to_utf16(path);
}

std::u16string known_folder(int identifier) {
    wchar_t path[MAX_PATH];
    if (SHGetFolderPathW(nullptr, identifier | CSIDL_FLAG_CREATE, nullptr, SHGFP_TYPE_CURRENT,
                         path) != S_OK)
        return {};
    return folder_path(path);
}

std::u16string temporary_folder() {
    wchar_t path[MAX_PATH + 1];
    const DWORD length = GetTempPathW(MAX_PATH + 1, path);
    return length == 0 || length > MAX_PATH ? std::u16string()
                                            : folder_path(std::wstring(path, length));
}

std::u16string system_drive() {
    wchar_t path[MAX_PATH];
    const UINT length = GetWindowsDirectoryW(path, MAX_PATH);
    return length < 3 || length >= MAX_PATH ? std::u16string() : folder_path(std::wstring(path, 3));
}

std::u16string user_name() {
    wchar_t name[257];
    DWORD length = 257;
    return GetUserNameW(name, &length) ? to_utf16(name) : std::u16string();
}

std::int64_t today(const SYSTEMTIME& now) {
    return day_number(now.wYear, now.wMonth, now.wDay);
}

std::int64_t second_of_day(const SYSTEMTIME& now) {
    return (now.wHour * 60 + now.wMinute) * 60 + now.wSecond;
}

std::u16string installed_plugins(const PluginHost& host) {
    const PluginIdentity& identity = host.identity();
    return identity.name + u";" + utf16_from_utf8(identity.file_version) + u";Enabled";
}

} // namespace

Value host_answer(GetItem item, const PluginHost& host) {
    SYSTEMTIME now;
    GetLocalTime(&now);
    switch (item) {
    case GetItem::ApplicationArchitecture:
        return u"x86_64";
    case GetItem::ApplicationVersion:
        return host.options().version_text;
    case GetItem::CurrentDate:
        return Date{today(now)};
    case GetItem::CurrentTime:
        return Time{Decimal(second_of_day(now))};
    case GetItem::CurrentTimestamp:
        return Timestamp{Decimal((today(now) - 1) * seconds_per_day + second_of_day(now))};
    case GetItem::DesktopPath:
        return known_folder(CSIDL_DESKTOPDIRECTORY);
    case GetItem::DocumentsPath:
        return known_folder(CSIDL_PERSONAL);
    case GetItem::FilePath: // the session knows it
        return Value();
    case GetItem::HostName:
        return HostWindow::host_name();
    case GetItem::InstalledFMPlugins:
        return installed_plugins(host);
    case GetItem::StatusAreaState:
        return Decimal(0); // hidden
    case GetItem::SystemDrive:
        return system_drive();
    case GetItem::SystemPlatform:
        return Decimal(-2); // Windows
    case GetItem::TemporaryPath:
        return temporary_folder();
    case GetItem::UserName:
        return user_name();
    case GetItem::WindowContentHeight:
        return Decimal(HostWindow::current() ? HostWindow::content_height : 0);
    case GetItem::WindowContentWidth:
        return Decimal(HostWindow::current() ? HostWindow::content_width : 0);
    case GetItem::WindowName:
        return HostWindow::current() ? HostWindow::name() : std::u16string();
    }
    return Value();
}

} // namespace vell::console
