#include "src/windows/storage/code_signature.h"

#include "src/windows/handle.h"
#include "src/windows/storage/path.h"
#include "src/windows/text.h"

#include <wincrypt.h> // needed by the next ones

#include <softpub.h>
#include <wintrust.h>

#include <algorithm>
#include <vector>

namespace vell::windows {

using namespace files;

namespace {

struct StoreKind {
    using Type = HCERTSTORE;
    static Type empty() { return nullptr; }
    static void close(Type store) { CertCloseStore(store, 0); }
};
struct MessageKind {
    using Type = HCRYPTMSG;
    static Type empty() { return nullptr; }
    static void close(Type message) { CryptMsgClose(message); }
};
struct CertificateKind {
    using Type = PCCERT_CONTEXT;
    static Type empty() { return nullptr; }
    static void close(Type certificate) { CertFreeCertificateContext(certificate); }
};
using UniqueStore = UniqueResource<StoreKind>;
using UniqueMessage = UniqueResource<MessageKind>;
using UniqueCertificate = UniqueResource<CertificateKind>;

// The verdict of Windows on the file's signature: 0 when it is valid.
LONG verify(const std::wstring& path, HANDLE file) {
    WINTRUST_FILE_INFO file_info{};
    file_info.cbStruct = sizeof file_info;
    file_info.pcwszFilePath = path.c_str();
    file_info.hFile = file;

    WINTRUST_DATA data{};
    data.cbStruct = sizeof data;
    data.dwUIChoice = WTD_UI_NONE;
    data.fdwRevocationChecks = WTD_REVOKE_NONE;
    data.dwUnionChoice = WTD_CHOICE_FILE;
    data.pFile = &file_info;
    data.dwStateAction = WTD_STATEACTION_VERIFY;
    data.dwProvFlags = WTD_CACHE_ONLY_URL_RETRIEVAL;

    GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
    auto* const no_window = static_cast<HWND>(INVALID_HANDLE_VALUE);
    const LONG verdict = WinVerifyTrust(no_window, &action, &data);
    data.dwStateAction = WTD_STATEACTION_CLOSE;
    WinVerifyTrust(no_window, &action, &data);
    return verdict;
}

struct Signature {
    UniqueStore certificates;
    UniqueMessage message;
};

// What is embedded in the file; an empty one when nothing is.
Signature embedded_signature(const std::wstring& path) {
    HCERTSTORE store = nullptr;
    HCRYPTMSG message = nullptr;
    if (!CryptQueryObject(CERT_QUERY_OBJECT_FILE, path.c_str(),
                          CERT_QUERY_CONTENT_FLAG_PKCS7_SIGNED_EMBED, CERT_QUERY_FORMAT_FLAG_BINARY,
                          0, nullptr, nullptr, nullptr, &store, &message, nullptr))
        return {};
    return {UniqueStore(store), UniqueMessage(message)};
}

UniqueCertificate signers_certificate(const Signature& signature) {
    DWORD size = 0;
    if (!CryptMsgGetParam(signature.message.get(), CMSG_SIGNER_CERT_INFO_PARAM, 0, nullptr, &size))
        return {};
    std::vector<BYTE> bytes(size);
    if (!CryptMsgGetParam(signature.message.get(), CMSG_SIGNER_CERT_INFO_PARAM, 0, bytes.data(),
                          &size))
        return {};
    return UniqueCertificate(CertGetSubjectCertificateFromStore(
        signature.certificates.get(), X509_ASN_ENCODING | PKCS_7_ASN_ENCODING,
        reinterpret_cast<CERT_INFO*>(bytes.data())));
}

std::u16string name_in(PCCERT_CONTEXT certificate, DWORD flags) {
    const DWORD length =
        CertGetNameStringW(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, flags, nullptr, nullptr, 0);
    std::wstring name(length, L'\0');
    CertGetNameStringW(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, flags, nullptr, name.data(),
                       length);
    name.resize(std::min(name.find(L'\0'), name.size()));
    return to_utf16(name);
}

std::optional<params::CalendarTime> calendar_time(const FILETIME& time) {
    SYSTEMTIME utc;
    if (!FileTimeToSystemTime(&time, &utc))
        return std::nullopt;
    return params::CalendarTime{utc.wYear, utc.wMonth,  utc.wDay,
                                utc.wHour, utc.wMinute, utc.wSecond};
}

std::optional<Certificate> certificate_of(const Signature& signature) {
    const UniqueCertificate certificate = signers_certificate(signature);
    if (!certificate)
        return std::nullopt;
    const CERT_INFO& information = *certificate.get()->pCertInfo;
    return Certificate{name_in(certificate.get(), 0),
                       name_in(certificate.get(), CERT_NAME_ISSUER_FLAG),
                       calendar_time(information.NotBefore), calendar_time(information.NotAfter)};
}

} // namespace

Result<CodeSignature> code_signature(const NativePath& path) {
    const std::wstring name = win32_path(path);
    // A running program has its file open for reading.
    const UniqueFile file(CreateFileW(name.c_str(), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        return Failure{last_error()};
    const Signature signature = embedded_signature(name);
    CodeSignature result;
    result.is_signed = static_cast<bool>(signature.message);
    result.verdict = static_cast<std::uint32_t>(result.is_signed ? verify(name, file.get())
                                                                 : TRUST_E_NOSIGNATURE);
    if (result.is_signed)
        result.certificate = certificate_of(signature);
    return result;
}

} // namespace vell::windows
