#include "console/selftest/machine.h"

#include "console/host/wide_text.h"
#include "src/windows/desktop/com.h"
#include "src/windows/handle.h"

#include <windows.h>

#include <wincodec.h>

#include <cstdio>

namespace vell::selftest {
namespace {

using console::narrow;

template <typename Function>
Function function_of(const wchar_t* library, const char* name) {
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(library), name)));
}

template <typename... Values>
std::string formatted(const char* format, Values... values) {
    char text[200];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

constexpr const wchar_t* current_version = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

DWORD registry_number(const wchar_t* key, const wchar_t* name) {
    DWORD value = 0;
    DWORD size = sizeof value;
    RegGetValueW(HKEY_LOCAL_MACHINE, key, name, RRF_RT_REG_DWORD, nullptr, &value, &size);
    return value;
}

std::string registry_text(const wchar_t* key, const wchar_t* name) {
    wchar_t value[100] = L"";
    DWORD size = sizeof value;
    const LSTATUS status =
        RegGetValueW(HKEY_LOCAL_MACHINE, key, name, RRF_RT_REG_SZ, nullptr, value, &size);
    return status == ERROR_SUCCESS ? narrow(value) : std::string();
}

// The real version, whatever the program was made for.
std::string windows_version() {
    using GetVersion = LONG(WINAPI*)(OSVERSIONINFOW*);
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    if (const auto get = function_of<GetVersion>(L"ntdll.dll", "RtlGetVersion"))
        get(&version);
    std::string text = formatted("%lu.%lu.%lu.%lu", version.dwMajorVersion, version.dwMinorVersion,
                                 version.dwBuildNumber, registry_number(current_version, L"UBR"));
    const std::string name = registry_text(current_version, L"DisplayVersion");
    const std::string edition = registry_text(current_version, L"EditionID");
    return text + (name.empty() ? "" : " " + name) + (edition.empty() ? "" : ", " + edition);
}

std::string wine_version() {
    using GetVersion = const char*(CDECL*)();
    const auto get = function_of<GetVersion>(L"ntdll.dll", "wine_get_version");
    return get ? get() : "no";
}

std::string processors() {
    using IsWow = BOOL(WINAPI*)(HANDLE, USHORT*, USHORT*);
    USHORT emulated = 0;
    USHORT native = IMAGE_FILE_MACHINE_AMD64;
    if (const auto is_wow = function_of<IsWow>(L"kernel32.dll", "IsWow64Process2"))
        is_wow(GetCurrentProcess(), &emulated, &native);
    SYSTEM_INFO info{};
    GetNativeSystemInfo(&info);
    return std::to_string(info.dwNumberOfProcessors) +
           (native == IMAGE_FILE_MACHINE_ARM64 ? ", ARM64 with emulation" : ", x64");
}

std::string code_pages() {
    return formatted("ANSI %u, OEM %u, console %u", GetACP(), GetOEMCP(), GetConsoleOutputCP());
}

std::string locale() {
    wchar_t name[LOCALE_NAME_MAX_LENGTH] = L"";
    GetUserDefaultLocaleName(name, LOCALE_NAME_MAX_LENGTH);
    wchar_t language[LOCALE_NAME_MAX_LENGTH] = L"";
    LCIDToLocaleName(GetUserDefaultUILanguage(), language, LOCALE_NAME_MAX_LENGTH, 0);
    return narrow(name) + ", language of Windows " + narrow(language);
}

std::string time_zone() {
    DYNAMIC_TIME_ZONE_INFORMATION zone{};
    const DWORD season = GetDynamicTimeZoneInformation(&zone);
    const LONG bias =
        zone.Bias + (season == TIME_ZONE_ID_DAYLIGHT ? zone.DaylightBias : zone.StandardBias);
    return narrow(zone.TimeZoneKeyName) + formatted(", now UTC%+.2f h", -bias / 60.0);
}

std::string local_time() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return formatted("%04u-%02u-%02u %02u:%02u:%02u", now.wYear, now.wMonth, now.wDay, now.wHour,
                     now.wMinute, now.wSecond);
}

std::string disk_of(const std::filesystem::path& folder) {
    wchar_t root[MAX_PATH + 1] = L"";
    wchar_t system[MAX_PATH + 1] = L"";
    DWORD flags = 0;
    GetVolumePathNameW(folder.c_str(), root, MAX_PATH + 1);
    GetVolumeInformationW(root, nullptr, 0, nullptr, nullptr, &flags, system, MAX_PATH + 1);
    ULARGE_INTEGER free{};
    GetDiskFreeSpaceExW(folder.c_str(), &free, nullptr, nullptr);
    return narrow(system) + formatted(", %.1f GB free", static_cast<double>(free.QuadPart) / 1e9);
}

bool is_elevated() {
    HANDLE handle = nullptr;
    OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &handle);
    const UniqueHandle token(handle);
    TOKEN_ELEVATION elevation{};
    DWORD size = 0;
    GetTokenInformation(token.get(), TokenElevation, &elevation, sizeof elevation, &size);
    return elevation.TokenIsElevated != 0;
}

std::string rights() {
    constexpr const wchar_t* key = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\AppModelUnlock";
    const bool is_developer = registry_number(key, L"AllowDevelopmentWithoutDevLicense") != 0;
    return std::string(is_elevated() ? "administrator" : "user") +
           (is_developer ? ", developer mode" : ", no developer mode");
}

std::string name_of(IUnknown& component) {
    ComPtr<IWICComponentInfo> info;
    wchar_t name[100] = L"";
    UINT length = 0;
    if (SUCCEEDED(component.QueryInterface(IID_PPV_ARGS(&info))))
        info->GetFriendlyName(100, name, &length);
    return narrow(name);
}

// The decoders of Windows' imaging component, those that a user has installed among them.
std::string picture_codecs() {
    const ComApartment apartment;
    ComPtr<IWICImagingFactory> factory;
    ComPtr<IEnumUnknown> decoders;
    if (FAILED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                IID_PPV_ARGS(&factory))) ||
        FAILED(factory->CreateComponentEnumerator(WICDecoder, WICComponentEnumerateDefault,
                                                  &decoders)))
        return "unknown";
    std::string names;
    ULONG count = 0;
    for (ComPtr<IUnknown> next; decoders->Next(1, &next, &count) == S_OK; next.Reset())
        names += (names.empty() ? "" : ", ") + name_of(*next.Get());
    return names;
}

} // namespace

std::string file_version(const std::filesystem::path& file) {
    std::vector<char> block(GetFileVersionInfoSizeW(file.c_str(), nullptr));
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT length = 0;
    if (block.empty() ||
        !GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(block.size()), block.data()) ||
        !VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &length))
        return "no version";
    return formatted("%u.%u.%u.%u", HIWORD(fixed->dwFileVersionMS), LOWORD(fixed->dwFileVersionMS),
                     HIWORD(fixed->dwFileVersionLS), LOWORD(fixed->dwFileVersionLS));
}

Facts machine_facts(const std::filesystem::path& temporary_folder) {
    return {{"time", local_time()},
            {"Windows", windows_version()},
            {"Wine", wine_version()},
            {"processors", processors()},
            {"code pages", code_pages()},
            {"locale", locale()},
            {"time zone", time_zone()},
            {"temporary folder", narrow(temporary_folder.wstring())},
            {"its disk", disk_of(temporary_folder)},
            {"rights", rights()},
            {"picture codecs", picture_codecs()}};
}

std::filesystem::path executable_folder() {
    std::wstring path(MAX_PATH * 4, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return std::filesystem::path(path).parent_path();
}

std::filesystem::path temporary_folder() {
    wchar_t path[MAX_PATH + 1] = L"";
    GetTempPathW(MAX_PATH + 1, path);
    return path;
}

std::filesystem::path long_form(const std::filesystem::path& path) {
    wchar_t name[MAX_PATH * 4] = L"";
    const DWORD length = GetLongPathNameW(path.c_str(), name, MAX_PATH * 4);
    return length > 0 && length < MAX_PATH * 4 ? std::filesystem::path(name) : path;
}

std::wstring environment(const wchar_t* name) {
    wchar_t value[1000] = L"";
    const DWORD length = GetEnvironmentVariableW(name, value, 1000);
    return length < 1000 ? std::wstring(value, length) : std::wstring();
}

bool was_double_clicked() {
    DWORD process = 0;
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) &&
           GetConsoleProcessList(&process, 1) == 1;
}

} // namespace vell::selftest
