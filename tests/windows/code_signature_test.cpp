// VlFile_GetCodeSignInfo on program files made for it.
#include "tests/windows/base64.h"
#include "tests/windows/plugin_fixture.h"

#include <algorithm>

namespace vell::test {
namespace {

// A signed message whose signer's certificate is issued by an authority that no computer trusts.
constexpr const char* signed_message =
    "MIICBQYJKoZIhvcNAQcCoIIB9jCCAfICAQExDTALBglghkgBZQMEAgEwEwYJKoZIhvcNAQcBoAYEBHZlbGygggE4MIIB"
    "NDCB2gIBATAKBggqhkjOPQQDAjAeMRwwGgYDVQQDDBNWZWxsIFRlc3QgQXV0aG9yaXR5MB4XDTI0MDMxNTEyMDAwMFoX"
    "DTI5MDcxNDIzNTk1OVowLjEXMBUGA1UEAwwOR3LDvMOfZSBTaWduZXIxEzARBgNVBAoMClZlbGwgVGVzdHMwWTATBgcq"
    "hkjOPQIBBggqhkjOPQMBBwNCAAR56spwwaA8a5xqqZh0Ik8reiH2TIihKLWDoiVR0vaFxWVSQJxvoEbD3bYF7Fe37BWY"
    "aByG1+IJTKNJIDShC1phMAoGCCqGSM49BAMCA0kAMEYCIQDUfnYR6u+AhVpdrFw6xT6fESJ3RET1RZDHiaJOoLZKlgIh"
    "AIHt/1JleNLeg6lFpHbvVM9EuYMpV3vKw5/lt27FEvqMMYGMMIGJAgEBMCMwHjEcMBoGA1UEAwwTVmVsbCBUZXN0IEF1"
    "dGhvcml0eQIBATALBglghkgBZQMEAgEwCgYIKoZIzj0EAwIERjBEAiBt1g8Ml6rBREoXj/KtECSGgLKvvavYMYga7PR4"
    "nVtxtQIgUAd3LQiv586nc5hz8pqf2JsvUjxBSrU/YitwH7SyMFw=";

std::string unsigned_program() {
    return read_file(executable_folder() + L"FMWrapper.dll");
}

// One whose certificate table holds the signature.
std::string program(std::string_view signature) {
    struct {
        DWORD length;
        WORD revision = 0x0200;
        WORD type = 0x0002; // a signed message
    } entry{static_cast<DWORD>((sizeof entry + signature.size() + 7) / 8 * 8)};
    std::string file = unsigned_program();
    file.resize((file.size() + 7) / 8 * 8);
    const auto start = static_cast<DWORD>(file.size());
    file.append(reinterpret_cast<const char*>(&entry), sizeof entry).append(signature);
    file.resize(start + entry.length);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(file.data());
    auto* nt = reinterpret_cast<IMAGE_NT_HEADERS64*>(file.data() + dos->e_lfanew);
    nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_SECURITY] = {start, entry.length};
    return file;
}

class CodeSignature : public PluginWithFolder {
  protected:
    std::u16string info(const std::u16string& path) {
        return call(u"VlFile_GetCodeSignInfo", {u"", path});
    }
};

TEST_F(CodeSignature, AnUnsignedFileSaysSo) {
    for (const std::string& bytes :
         {std::string("no program"), std::string(), unsigned_program(), program("no message")})
        EXPECT_EQ(info(folder.file(L"unsigned.exe", bytes)), u"Signed: 0\rValid: 0");
    EXPECT_EQ(info(to_utf16(executable_folder()) + u"windows_tests.exe"), // while it runs
              u"Signed: 0\rValid: 0");
}

TEST_F(CodeSignature, ASignatureThatIsNotTrustedIsToldWithItsNames) {
    const std::string message = bytes_of_base64(signed_message);
    ASSERT_EQ(message.size(), 521u);
    const std::u16string file = folder.file(L"signed \xD83D\xDE00.exe", program(message));
    const std::u16string text = info(file);
    const std::u16string_view before = u"Signed: 1\rValid: 0\rStatus: 0x";
    EXPECT_EQ(text.substr(0, before.size()), before);
    // Why it is not valid depends on the version of Windows: it is no signature of this program,
    // and nobody trusts its authority.
    const std::u16string status = text.substr(std::min(text.size(), before.size()), 8);
    EXPECT_EQ(status.find_first_not_of(u"0123456789ABCDEF"), std::u16string::npos);
    EXPECT_NE(status.find_first_not_of(u'0'), std::u16string::npos);
    EXPECT_EQ(text.substr(std::min(text.size(), before.size() + 8)),
              u"\rSigner: Gr\u00FC\u00DFe Signer\rIssuer: Vell Test Authority"
              u"\rValidFrom: 2024-03-15T12:00:00Z\rValidTo: 2029-07-14T23:59:59Z");
    EXPECT_TRUE(DeleteFileW(as_wide(file))); // nothing holds it
}

TEST_F(CodeSignature, WhatCannotBeReadIsReported) {
    EXPECT_EQ(info(path(L"none.exe")), u"$$-43");
    EXPECT_EQ(info(path()), u"$$-47");
    const std::u16string file = folder.file(L"held.exe", unsigned_program());
    const UniqueFile held = open_file(file, GENERIC_WRITE);
    ASSERT_TRUE(held);
    EXPECT_EQ(info(file), u"$$-47");
}

} // namespace
} // namespace vell::test
