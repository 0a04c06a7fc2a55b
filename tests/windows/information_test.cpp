// What is told about real files and folders, and their attributes, through the host.
#include "tests/windows/plugin_fixture.h"
#include "tests/windows/wine.h"

#include <shellapi.h>

#include <algorithm>

namespace vell::test {
namespace {

constexpr auto md5_of_nothing = u"d41d8cd98f00b204e9800998ecf8427e";

class Information : public PluginWithFolder {
  protected:
    std::u16string ask(const char16_t* function, const char16_t* switches,
                       const std::u16string& path) {
        return call(function, {switches, path});
    }
    std::u16string attribute(const char16_t* switches, const std::u16string& path) {
        return ask(u"VlFile_GetFileAttribute", switches, path);
    }
    std::u16string set_attribute(const char16_t* switches, const std::u16string& path) {
        return ask(u"VlFile_SetFileAttribute", switches, path);
    }
};

TEST_F(Information, ExistsNeverReportsAnError) {
    const std::u16string file = folder.file(L"there \xD83D\xDE00.txt", "x");
    const UniqueFile held = open_file(file, GENERIC_READ | GENERIC_WRITE);
    for (const auto& there : {file, u"filewin:/" + file, path()})
        EXPECT_EQ(ask(u"VlFile_Exists", u"", there), u"1");
    for (const auto& absent : {path(L"none"), path(L"none\\none"), std::u16string(u"??:*|")})
        EXPECT_EQ(ask(u"VlFile_Exists", u"", absent), u"0");
}

TEST_F(Information, SizesReachBeyond4GiBAndTellOfFilesInUse) {
    const std::u16string file = folder.file(L"size.bin", "12345");
    for (const char16_t* function : {u"VlFile_GetFileSize", u"VlFile_GetFileHash"}) {
        EXPECT_EQ(ask(function, u"", path(L"none")), u"$$-43");
        EXPECT_EQ(ask(function, u"", path(L"none\\none")), u"$$-120");
        EXPECT_EQ(ask(function, u"", path()), u"$$-47");
    }
    const UniqueFile held = open_file(file, GENERIC_READ | GENERIC_WRITE);
    ASSERT_TRUE(held);
    EXPECT_EQ(ask(u"VlFile_GetFileHash", u"", file), u"$$-47");
    set_length(held, 5'368'709'121);
    EXPECT_EQ(ask(u"VlFile_GetFileSize", u"", file), u"5368709121");
}

TEST_F(Information, HashesAreThePublishedOnes) {
    const struct {
        std::string contents;
        const char16_t* md5;
        const char16_t* sha1;
        const char16_t* sha256;
        const char16_t* sha512;
    } vectors[] = {
        {"", md5_of_nothing, u"da39a3ee5e6b4b0d3255bfef95601890afd80709",
         u"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855",
         u"cf83e1357eefb8bdf1542850d66d8007d620e4050b5715dc83f4a921d36ce9ce"
         u"47d0d13c5d85f2b0ff8318d2877eec2f63b931bd47417a81a538327af927da3e"},
        {"abc", u"900150983cd24fb0d6963f7d28e17f72", u"a9993e364706816aba3e25717850c26c9cd0d89d",
         u"ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad",
         u"ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
         u"2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f"},
        {std::string(1'000'000, 'a'), u"7707d6ae4e027c70eea2a935c2296f21",
         u"34aa973cd4c4daa4f61eeb2bdbad27316534016f",
         u"cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0",
         u"e718483d0ce769644e2e42c7bc15b4638e1f98b13b2044285632a803afa973eb"
         u"de0ff244877ea60a4cb0432ce577c31beb009c5c2c49aa2e4eadb217ad8cc09b"},
    };
    for (const auto& vector : vectors) {
        const std::u16string file = folder.file(L"hashed.bin", vector.contents);
        EXPECT_EQ(ask(u"VlFile_GetFileHash", u"", file), vector.md5);
        EXPECT_EQ(ask(u"VlFile_GetFileHash", u"-SHA1", file), vector.sha1);
        EXPECT_EQ(ask(u"VlFile_GetFileHash", u"-SHA256", file), vector.sha256);
        EXPECT_EQ(ask(u"VlFile_GetFileHash", u"-SHA512", file), vector.sha512);
    }
}

TEST_F(Information, AttributesAreReadAndSet) {
    const std::u16string file = folder.file(L"attributes \xD83D\xDE00.txt", "x");
    for (const std::u16string& item : {file, folder.subfolder(L"folder")})
        for (const auto& [switches, hidden] : {std::pair(u"-hide", u"1"), {u"-unhide", u"0"}}) {
            EXPECT_EQ(set_attribute(switches, item), u"0");
            EXPECT_EQ(attribute(u"-hiddenAttr", item), hidden);
        }
    EXPECT_EQ(set_attribute(u"-lock -hide", file), u"0");
    EXPECT_EQ(attribute(u"-lockAttr", file), u"1");
    EXPECT_EQ(set_attribute(u"-unlock -SetArchive", file), u"0");
    EXPECT_EQ(attribute(u"-hiddenAttr", file), u"1"); // as it was
    EXPECT_EQ(attribute(u"-archiveAttr", file), u"1");
    for (const auto& [item, code] :
         {std::pair(path(L"none"), u"$$-43"), {path(L"none\\none"), u"$$-120"}}) {
        EXPECT_EQ(attribute(u"-lockAttr", item), code);
        EXPECT_EQ(set_attribute(u"-lock", item), code);
    }
}

TEST_F(Information, AFileInUseOrLockedIsNotFree) {
    const std::u16string file = folder.file(L"free.txt", "x");
    // Whether it can be written, and whether nobody uses it.
    const auto is_free = [&](const std::u16string& item) {
        return ask(u"VlFile_IsFree", u"", item) + u' ' + attribute(u"-IsFree", item);
    };
    EXPECT_EQ(is_free(file), u"1 1");
    for (const DWORD share : {DWORD{0}, DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE}}) {
        const UniqueFile held = open_file(file, GENERIC_READ, share);
        ASSERT_TRUE(held);
        EXPECT_EQ(is_free(file), u"0 0");
    }
    EXPECT_EQ(set_attribute(u"-lock", file), u"0");
    EXPECT_EQ(is_free(file), u"0 1");
    EXPECT_EQ(set_attribute(u"-unlock", file), u"0");
    EXPECT_EQ(contents(L"free.txt"), "x");
    for (const wchar_t* missing : {L"none", L"none\\none"})
        EXPECT_EQ(is_free(path(missing)), u"$$-43 $$-43");
    EXPECT_EQ(attribute(u"-IsFree", path(L"")), u"1"); // a folder
}

// A file type of this test's own, as an installed program would register it.
class RegisteredType {
  public:
    RegisteredType() {
        set(extension_, L"vell.test.kind");
        set(kind_, L"Kind of the test \u00FC");
    }
    RegisteredType(const RegisteredType&) = delete;
    RegisteredType& operator=(const RegisteredType&) = delete;
    ~RegisteredType() {
        RegDeleteTreeW(root_, extension_);
        RegDeleteTreeW(root_, kind_);
    }

  private:
    void set(const wchar_t* key, const std::wstring& value) const {
        const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
        EXPECT_EQ(RegSetKeyValueW(root_, key, nullptr, REG_SZ, value.c_str(), size), 0);
    }

    // Classes of the user, who may write there; Wine looks at those of the machine alone.
    const HKEY root_ = runs_in_wine() ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
    static constexpr auto extension_ = L"Software\\Classes\\.vellkind";
    static constexpr auto kind_ = L"Software\\Classes\\vell.test.kind";
};

TEST_F(Information, KindsAreTheShells) {
    const RegisteredType type;
    const std::u16string expected = u"Kind of the test \u00FC";
    const std::u16string file = folder.file(L"a \xD83D\xDE00.vellkind", "x");
    EXPECT_EQ(ask(u"VlFile_GetFileKind", u"", file), expected);
    EXPECT_EQ(ask(u"VlFile_GetFileKind", u"", folder.file(deep_name + L"deep.vellkind", "")),
              expected);

    SHFILEINFOW shell{};
    SHGetFileInfoW(folder.path().c_str(), 0, &shell, sizeof shell, SHGFI_TYPENAME);
    EXPECT_EQ(ask(u"VlFile_GetFileKind", u"", path()), to_utf16(shell.szTypeName));
    EXPECT_NE(to_utf16(shell.szTypeName), u"");
    EXPECT_EQ(ask(u"VlFile_GetFileKind", u"", path(L"none.vellkind")), u"$$-43");
    EXPECT_EQ(ask(u"VlFile_GetFileKind", u"", path(L"none\\none.vellkind")), u"$$-120");
}

TEST_F(Information, EverythingIsToldOfPathsBeyond260Characters) {
    const std::u16string file = folder.file(deep_name + L"deep.txt", "");
    EXPECT_EQ(ask(u"VlFile_Exists", u"", file), u"1");
    EXPECT_EQ(ask(u"VlFile_GetTypeOfItem", u"", path(deep_name)), u"folder");
    EXPECT_EQ(ask(u"VlFile_GetFileSize", u"", file), u"0");
    EXPECT_EQ(ask(u"VlFile_GetFileHash", u"", file), md5_of_nothing);
    for (const auto& [switches, locked] : {std::pair(u"-lock", u"1"), {u"-unlock", u"0"}}) {
        EXPECT_EQ(set_attribute(switches, file), u"0");
        EXPECT_EQ(attribute(u"-lockAttr", file), locked);
    }
    EXPECT_EQ(call(u"VlFile_SetTimestampModified", {u"", file, u"7/8/2022 13:14:15"}), u"0");
    EXPECT_EQ(ask(u"VlFile_GetTimestampModified", u"", file), u"7/8/2022 1:14:15 PM");
    EXPECT_EQ(ask(u"VlFile_GetCodeSignInfo", u"", file), u"Signed: 0\rValid: 0");
}

TEST_F(Information, LanguagesAreThoseOfTheUser) {
    ULONG count = 0;
    ULONG length = 0;
    ASSERT_TRUE(GetUserPreferredUILanguages(MUI_LANGUAGE_NAME, &count, nullptr, &length));
    std::wstring names(length, L'\0');
    ASSERT_TRUE(GetUserPreferredUILanguages(MUI_LANGUAGE_NAME, &count, names.data(), &length));
    const std::u16string all = call(u"VlFile_GetPreferredLanguages", {u""});
    const std::u16string first = call(u"VlFile_GetPreferredLanguages", {u"-GetFirstLanguage"});
    EXPECT_EQ(first, to_utf16(names.c_str()));
    EXPECT_EQ(all.substr(0, all.find(u'\r')), first);
    EXPECT_EQ(std::ranges::count(all, u'\r') + 1, static_cast<std::ptrdiff_t>(count));
    EXPECT_NE(first.find(u'-'), std::u16string::npos);
}

} // namespace
} // namespace vell::test
