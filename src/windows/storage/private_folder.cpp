#include "src/windows/storage/private_folder.h"

#include "src/windows/storage/private_items.h"

#include <aclapi.h>
#include <sddl.h>

#include <cstddef>
#include <vector>

namespace vell::windows {
namespace {

using UniqueLocalText = UniqueResource<LocalMemoryKind<wchar_t*>>;

// A TOKEN_USER, with what it points to behind it.
Result<std::vector<std::byte>> token_user() {
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token))
        return Failure{last_error()};
    const UniqueHandle owner(token);
    DWORD size = 0;
    GetTokenInformation(token, TokenUser, nullptr, 0, &size);
    std::vector<std::byte> bytes(size);
    if (!GetTokenInformation(token, TokenUser, bytes.data(), size, &size))
        return Failure{last_error()};
    return bytes;
}

PSID sid_in(const std::vector<std::byte>& user) {
    return reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid;
}

// Nobody else has rights in it, whatever the folder above gives.
Result<void> make_folder(const std::wstring& path) {
    PrivateAccess access(AlsoAllowed::Nobody);
    if (access.get() == nullptr)
        return Failure{last_error()};
    if (!CreateDirectoryW(path.c_str(), access.get()) && GetLastError() != ERROR_ALREADY_EXISTS)
        return Failure{last_error()};
    return {};
}

Result<void> check_owner(HANDLE folder, PSID user) {
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD error = GetSecurityInfo(folder, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner,
                                        nullptr, nullptr, nullptr, &descriptor);
    if (error != ERROR_SUCCESS)
        return Failure{error_from_win32(static_cast<std::int32_t>(error))};
    const UniqueDescriptor memory(descriptor);
    if (owner == nullptr || !EqualSid(owner, user))
        return Failure{ErrorCode::Busy};
    return {};
}

} // namespace

Result<std::wstring> user_identifier() {
    const auto user = VELL_TRY(token_user());
    wchar_t* text = nullptr;
    if (!ConvertSidToStringSidW(sid_in(user), &text))
        return Failure{last_error()};
    const UniqueLocalText owner(text);
    return std::wstring(text);
}

Result<UniqueFile> open_private_folder(const std::wstring& path) {
    const auto user = VELL_TRY(token_user());
    VELL_TRY(make_folder(path));
    constexpr DWORD as_it_is = FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT;
    UniqueFile folder(CreateFileW(path.c_str(), READ_CONTROL | FILE_LIST_DIRECTORY,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                  as_it_is, nullptr));
    if (!folder)
        return Failure{last_error()};
    BY_HANDLE_FILE_INFORMATION found;
    if (!GetFileInformationByHandle(folder.get(), &found))
        return Failure{last_error()};
    constexpr DWORD kind = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    if ((found.dwFileAttributes & kind) != FILE_ATTRIBUTE_DIRECTORY)
        return Failure{ErrorCode::Busy};
    VELL_TRY(check_owner(folder.get(), sid_in(user)));
    return folder;
}

} // namespace vell::windows
