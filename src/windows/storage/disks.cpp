#include "src/system/disk_system.h"
#include "src/windows/error_windows.h"
#include "src/windows/handle.h"
#include "src/windows/parts.h"
#include "src/windows/storage/path.h"
#include "src/windows/text.h"

#include <winioctl.h>
#include <winnetwk.h>

#include <array>

namespace vell::windows {

using namespace files;

namespace {

ErrorCode last_disk_error() {
    return disk_error(static_cast<std::int32_t>(GetLastError()));
}

Result<void> check_network(DWORD error) {
    if (error == ERROR_EXTENDED_ERROR) { // the network provider has a number of its own
        wchar_t text[1];
        wchar_t provider[1];
        WNetGetLastErrorW(&error, text, 1, provider, 1);
    }
    if (error != NO_ERROR)
        return Failure{disk_error(static_cast<std::int32_t>(error))};
    return {};
}

Result<void> control(const UniqueFile& volume, DWORD code, void* input = nullptr,
                     std::size_t input_size = 0) {
    DWORD returned = 0;
    if (!DeviceIoControl(volume.get(), code, input, static_cast<DWORD>(input_size), nullptr, 0,
                         &returned, nullptr))
        return Failure{last_disk_error()};
    return {};
}

// A volume on which nothing is open can be locked. Programs that look at new disks may have
// something open for a moment.
Result<void> lock(const UniqueFile& volume) {
    constexpr int tries = 5;
    constexpr DWORD pause = 200; // milliseconds
    Result<void> locked;
    for (int i = 0; i < tries; ++i) {
        if (i > 0)
            Sleep(pause);
        locked = control(volume, FSCTL_LOCK_VOLUME);
        if (locked || locked.error() != ErrorCode::Busy)
            break;
    }
    return locked;
}

UniqueFile open_volume(char16_t letter, DWORD access) {
    const std::wstring path = {L'\\', L'\\', L'.', L'\\', static_cast<wchar_t>(letter), L':'};
    return UniqueFile(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  OPEN_EXISTING, 0, nullptr));
}

class Win32Disks : public DiskSystem {
  public:
    std::uint32_t letters() override { return GetLogicalDrives(); }

    DiskType type_of(const std::u16string& root) override {
        const NoErrorWindows quiet;
        switch (GetDriveTypeW(as_wide(root))) {
        case DRIVE_REMOVABLE:
            return DiskType::Removable;
        case DRIVE_FIXED:
            return DiskType::Fixed;
        case DRIVE_REMOTE:
            return DiskType::Network;
        case DRIVE_CDROM:
            return DiskType::Optical;
        case DRIVE_RAMDISK:
            return DiskType::Ram;
        case DRIVE_NO_ROOT_DIR:
            return DiskType::None;
        default:
            return DiskType::Unknown;
        }
    }

    Result<VolumeInformation> information(const std::u16string& root) override {
        const NoErrorWindows quiet;
        std::array<wchar_t, MAX_PATH + 1> name{};
        std::array<wchar_t, MAX_PATH + 1> file_system{};
        DWORD serial = 0;
        DWORD flags = 0;
        if (!GetVolumeInformationW(as_wide(root), name.data(), name.size(), &serial, nullptr,
                                   &flags, file_system.data(), file_system.size()))
            return Failure{last_disk_error()};
        VolumeInformation information;
        information.name = to_utf16(name.data());
        information.file_system = to_utf16(file_system.data());
        information.serial_number = serial;
        information.is_read_only = flags & FILE_READ_ONLY_VOLUME;
        return information;
    }

    Result<DiskSpace> space(const std::u16string& root) override {
        const NoErrorWindows quiet;
        ULARGE_INTEGER available;
        ULARGE_INTEGER total;
        // The separator is due for shares only, and does no harm elsewhere.
        std::wstring folder = win32_path({root, std::nullopt});
        if (!folder.ends_with(L'\\') && !folder.ends_with(L'/'))
            folder += L'\\';
        if (!GetDiskFreeSpaceExW(folder.c_str(), &available, &total, nullptr))
            return Failure{last_disk_error()};
        return DiskSpace{total.QuadPart, available.QuadPart};
    }

    std::u16string share_of(char16_t letter) override {
        const wchar_t drive[] = {static_cast<wchar_t>(letter), L':', L'\0'};
        std::wstring share(32'767, L'\0');
        auto length = static_cast<DWORD>(share.size());
        const DWORD error = WNetGetConnectionW(drive, share.data(), &length);
        // A connection that the user keeps has its name while the server cannot be reached, too.
        if (error != NO_ERROR && error != ERROR_CONNECTION_UNAVAIL)
            return {};
        return to_utf16(share.c_str());
    }

    char16_t system_letter() override {
        std::array<wchar_t, MAX_PATH + 1> path{};
        const UINT length = GetSystemWindowsDirectoryW(path.data(), path.size());
        return length > 0 && path[1] == L':' ? static_cast<char16_t>(path[0]) : u'C';
    }

    Result<void> connect(const ShareConnection& connection) override {
        const NoErrorWindows quiet;
        std::wstring share = to_wide(connection.share);
        std::wstring drive = to_wide(connection.drive);
        NETRESOURCEW resource{};
        resource.dwType = RESOURCETYPE_DISK;
        resource.lpRemoteName = share.data();
        resource.lpLocalName = drive.empty() ? nullptr : drive.data();
        // Without CONNECT_INTERACTIVE nobody is asked for a password. None at all means that of the
        // user who is logged on.
        const bool is_named = !connection.user.empty();
        const bool has_password = is_named || !connection.password.empty();
        return check_network(
            WNetAddConnection2W(&resource, has_password ? as_wide(connection.password) : nullptr,
                                is_named ? as_wide(connection.user) : nullptr,
                                connection.is_kept ? CONNECT_UPDATE_PROFILE : CONNECT_TEMPORARY));
    }

    Result<void> disconnect(const std::u16string& name, OpenFiles open_files) override {
        const NoErrorWindows quiet;
        return check_network(WNetCancelConnection2W(as_wide(name), CONNECT_UPDATE_PROFILE,
                                                    open_files == OpenFiles::CutOff));
    }

    Result<void> eject(char16_t letter, OpenFiles open_files) override {
        const NoErrorWindows quiet;
        UniqueFile volume = open_volume(letter, GENERIC_READ | GENERIC_WRITE);
        if (!volume) // what cannot be written, such as a CD
            volume = open_volume(letter, GENERIC_READ);
        if (!volume)
            return Failure{last_disk_error()};
        if (const auto locked = lock(volume); !locked && open_files == OpenFiles::Refuse)
            return locked;
        VELL_TRY(control(volume, FSCTL_DISMOUNT_VOLUME));
        PREVENT_MEDIA_REMOVAL prevent{FALSE};
        // Drives that never hold their medium back do not know this.
        static_cast<void>(control(volume, IOCTL_STORAGE_MEDIA_REMOVAL, &prevent, sizeof prevent));
        return control(volume, IOCTL_STORAGE_EJECT_MEDIA);
    }
};

} // namespace

DiskSystem& disks() {
    static Win32Disks instance;
    return instance;
}

} // namespace vell::windows
