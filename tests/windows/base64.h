// Bytes that a test's source holds as text.
#pragma once

#include <windows.h>

#include <wincrypt.h>

#include <string>
#include <string_view>

namespace vell::test {

inline std::string bytes_of_base64(std::string_view base64) {
    DWORD size = 0;
    const auto length = static_cast<DWORD>(base64.size());
    CryptStringToBinaryA(base64.data(), length, CRYPT_STRING_BASE64, nullptr, &size, nullptr,
                         nullptr);
    std::string bytes(size, '\0');
    CryptStringToBinaryA(base64.data(), length, CRYPT_STRING_BASE64,
                         reinterpret_cast<BYTE*>(bytes.data()), &size, nullptr, nullptr);
    return bytes;
}

} // namespace vell::test
