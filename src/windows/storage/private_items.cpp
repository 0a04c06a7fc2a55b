#include "src/windows/storage/private_items.h"

#include "src/windows/storage/path.h"
#include "src/windows/storage/private_folder.h"

#include <bcrypt.h>
#include <sddl.h>

#include <array>
#include <cstddef>
#include <string_view>

namespace vell::windows {

Result<std::wstring> random_uuid() {
    std::array<unsigned char, 16> bytes;
    if (BCryptGenRandom(nullptr, bytes.data(), bytes.size(), BCRYPT_USE_SYSTEM_PREFERRED_RNG) != 0)
        return Failure{ErrorCode::NotAvailable};
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40); // version 4: random
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
    std::wstring text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        constexpr std::wstring_view digits = L"0123456789abcdef";
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += L'-';
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 0x0F];
    }
    return text;
}

PrivateAccess::PrivateAccess(AlsoAllowed others) {
    const Result<std::wstring> user = user_identifier();
    if (!user)
        return;
    // The user's own, protected from what the folder hands down; all rights, also for what a folder
    // will hold.
    std::wstring text = L"O:" + *user + L"D:P(A;OICI;FA;;;" + *user + L")";
    if (others == AlsoAllowed::SystemAndAdministrators)
        text += L"(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)";
    PSECURITY_DESCRIPTOR made = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1, &made,
                                                              nullptr))
        return;
    descriptor_ = UniqueDescriptor(made);
    attributes_ = {sizeof attributes_, made, FALSE};
}

SECURITY_ATTRIBUTES* PrivateAccess::get() {
    return descriptor_ ? &attributes_ : nullptr;
}

UniqueFile create_private_file(const std::wstring& path, DWORD share, DWORD flags) {
    PrivateAccess access;
    return UniqueFile(CreateFileW(without_length_limit(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                                  share, access.get(), CREATE_NEW, flags, nullptr));
}

} // namespace vell::windows
