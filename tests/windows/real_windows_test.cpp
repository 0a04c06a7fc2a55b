// What Wine cannot show: links, streams and permissions of NTFS, signatures that Windows trusts,
// programs that run, and pictures by codecs and the shell of Windows. Skipped where it cannot be
// had.
#include "src/windows/desktop/com.h"
#include "src/windows/system.h"
#include "tests/windows/base64.h"
#include "tests/windows/links.h"
#include "tests/windows/plugin_fixture.h"
#include "tests/windows/wine.h"

#include <aclapi.h>
#include <sddl.h>
#include <shlobj.h>
#include <wincodec.h>

#include <algorithm>
#include <filesystem>
#include <set>

namespace vell::test {
namespace {

std::wstring windows_folder() {
    wchar_t path[MAX_PATH] = L"";
    GetWindowsDirectoryW(path, MAX_PATH);
    return path;
}

class RealWindows : public PluginWithFolder {
  protected:
    void SetUp() override {
        if (runs_in_wine())
            GTEST_SKIP() << "Wine has no " << missing_in_wine();
    }
    virtual const char* missing_in_wine() const = 0;

    bool disk_has(DWORD feature) const {
        wchar_t root[MAX_PATH + 1] = L"";
        DWORD flags = 0;
        GetVolumePathNameW(folder.path().c_str(), root, MAX_PATH + 1);
        GetVolumeInformationW(root, nullptr, 0, nullptr, nullptr, &flags, nullptr, 0);
        return (flags & feature) != 0;
    }
};

// Links

class Links : public RealWindows {
  protected:
    const char* missing_in_wine() const override { return "links of Windows"; }
    void SetUp() override {
        RealWindows::SetUp();
        if (!IsSkipped() && !disk_has(FILE_SUPPORTS_REPARSE_POINTS))
            GTEST_SKIP() << "the disk of the temporary folder has no links";
    }

    // A folder with a file, and one with a link to it.
    void make_tree(const std::function<bool(const std::wstring&, const std::wstring&)>& link) {
        kept = folder.file(L"kept\\inside.txt", "12345");
        folder.file(L"tree\\own.txt", "1");
        linked = link(folder.path(L"tree\\link"), folder.path(L"kept"));
    }
    void expect_that_nobody_goes_through() {
        EXPECT_EQ(sorted_lines(call(u"VlFile_ListFolder",
                                    {u"files folders -recursive", Value(path(L"tree"))})),
                  (Lines{u"link", u"own.txt"}));
        EXPECT_EQ(call(u"VlFile_GetFolderSize", {u"", path(L"tree")}), u"1");
        EXPECT_EQ(call(u"VlFile_Search", {u"-files", path(L"tree"), u"inside.txt"}), u"");
        EXPECT_EQ(call(u"VlFile_GetContents", {u"", path(L"tree\\link\\inside.txt")}), u"12345");
        EXPECT_EQ(call(u"VlFile_CreateZip", {u"", path(L"tree"), path(L"tree.zip")}), u"0");
        EXPECT_EQ(call(u"VlFile_GetZipInfo", {u"", path(L"tree.zip")}), u"tree/own.txt\r");
        EXPECT_EQ(call(u"VlFile_DeleteFolder", {delete_all, path(L"tree")}), u"0");
        EXPECT_FALSE(exists(path(L"tree")));
        EXPECT_EQ(contents(L"kept\\inside.txt"), "12345");
    }

    std::u16string kept;
    bool linked = false;
};

// Works in developer mode, too.
bool make_symbolic_link(const std::wstring& link, const std::wstring& target, DWORD flags) {
    constexpr DWORD without_privilege = 2;
    return CreateSymbolicLinkW(link.c_str(), target.c_str(), flags | without_privilege) != 0;
}

constexpr const char* no_symbolic_links = "symbolic links need developer mode or an administrator";

TEST_F(Links, JunctionsAreListedAndNotFollowed) {
    make_tree(make_link);
    ASSERT_TRUE(linked);
    expect_that_nobody_goes_through();
}

TEST_F(Links, SymbolicLinksToFoldersAreListedAndNotFollowed) {
    make_tree([](const std::wstring& link, const std::wstring& target) {
        return make_symbolic_link(link, target, SYMBOLIC_LINK_FLAG_DIRECTORY);
    });
    if (!linked)
        GTEST_SKIP() << no_symbolic_links;
    expect_that_nobody_goes_through();
}

TEST_F(Links, ALinkToAFileIsDeletedWithoutTheFile) {
    kept = folder.file(L"kept.txt", "12345");
    if (!make_symbolic_link(folder.path(L"link.txt"), folder.path(L"kept.txt"), 0))
        GTEST_SKIP() << no_symbolic_links;
    EXPECT_EQ(call(u"VlFile_GetContents", {u"", path(L"link.txt")}), u"12345");
    EXPECT_EQ(call(u"VlFile_DeleteFile", {u"", path(L"link.txt")}), u"0");
    EXPECT_FALSE(exists(path(L"link.txt")));
    EXPECT_EQ(contents(L"kept.txt"), "12345");
}

TEST_F(Links, AnArchiveIsNotExpandedThroughOne) {
    folder.file(L"source\\sub\\a.txt", "new");
    ASSERT_EQ(
        call(u"VlFile_CreateZip", {u"-DontAddEnclosingFolder", path(L"source"), path(L"a.zip")}),
        u"0");
    folder.file(L"outside\\kept.txt", "old");
    folder.subfolder(L"target");
    ASSERT_TRUE(make_link(folder.path(L"target\\sub"), folder.path(L"outside")));
    EXPECT_EQ(call(u"VlFile_UnZip", {u"-DontCreateArchiveFolder -OverwriteExisting", path(L"a.zip"),
                                     path(L"target")}),
              u"$$-37");
    EXPECT_FALSE(exists(path(L"outside\\a.txt")));
    RemoveDirectoryW(folder.path(L"target\\sub").c_str());
}

// Streams, attributes and permissions

class Ntfs : public RealWindows {
  protected:
    const char* missing_in_wine() const override { return "streams and permissions of files"; }
    void SetUp() override {
        RealWindows::SetUp();
        if (!IsSkipped() && !disk_has(FILE_NAMED_STREAMS))
            GTEST_SKIP() << "the disk of the temporary folder has no streams";
    }

    // Entries of access, as text.
    static std::wstring access_of(const std::u16string& item) {
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        GetNamedSecurityInfoW(as_wide(item), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                              nullptr, nullptr, nullptr, &descriptor);
        wchar_t* text = nullptr;
        ConvertSecurityDescriptorToStringSecurityDescriptorW(
            descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr);
        const std::wstring result = text ? text : L"";
        LocalFree(text);
        LocalFree(descriptor);
        return result;
    }
    static bool set_access(const std::u16string& item, const wchar_t* text) {
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        BOOL is_there = FALSE;
        BOOL is_default = FALSE;
        PACL list = nullptr;
        ConvertStringSecurityDescriptorToSecurityDescriptorW(text, SDDL_REVISION_1, &descriptor,
                                                             nullptr);
        GetSecurityDescriptorDacl(descriptor, &is_there, &list, &is_default);
        std::wstring name = to_wide(item);
        const DWORD error =
            SetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                  nullptr, list, nullptr);
        LocalFree(descriptor);
        return error == ERROR_SUCCESS;
    }
};

TEST_F(Ntfs, StreamsAreReadAndWrittenWhereTheyAreAndNotMade) {
    const std::u16string file = folder.file(L"a.txt", "main");
    folder.file(L"a.txt:note", "beside");
    EXPECT_EQ(call(u"VlFile_GetContents", {u"", file + u":note"}), u"beside");
    EXPECT_EQ(call(u"VlFile_SetContentsOfFile", {u"", file + u":note", u"changed"}), u"0");
    EXPECT_EQ(contents(L"a.txt:note"), "changed");
    EXPECT_EQ(contents(L"a.txt"), "main");
    EXPECT_EQ(call(u"VlFile_CreateFile", {u"", file + u":other"}), u"$$-37");
    EXPECT_EQ(call(u"VlFile_ExportToFile", {u"", u"x", file + u":other"}), u"$$-37");
    EXPECT_EQ(call(u"VlFile_CopyFile", {u"", file, path(L"b.txt")}), u"0");
    EXPECT_EQ(contents(L"b.txt:note"), "changed");
}

TEST_F(Ntfs, AnExportOverAFileKeepsItsStreamsAttributesAndPermissions) {
    const std::u16string file = folder.file(L"a.txt", "old");
    folder.file(L"a.txt:note", "beside");
    ASSERT_EQ(call(u"VlFile_SetTimestampCreated", {u"", file, u"1/2/2020 03:04:05"}), u"0");
    ASSERT_TRUE(set_access(file, L"D:(A;;FA;;;OW)(A;;FA;;;BA)(A;;FA;;;SY)(A;;FR;;;WD)"));
    ASSERT_TRUE(SetFileAttributesW(as_wide(file), FILE_ATTRIBUTE_HIDDEN));
    const auto everyone_has_access = [&] {
        return access_of(file).find(L";;;WD)") != std::wstring::npos;
    };
    ASSERT_TRUE(everyone_has_access());

    EXPECT_EQ(call(u"VlFile_ExportToFile", {u"-OverwriteExisting", u"new", file}), u"0");
    EXPECT_EQ(contents(L"a.txt"), "new");
    EXPECT_EQ(contents(L"a.txt:note"), "beside");
    EXPECT_TRUE(everyone_has_access());
    EXPECT_NE(GetFileAttributesW(as_wide(file)) & FILE_ATTRIBUTE_HIDDEN, 0u);
    EXPECT_EQ(call(u"VlFile_GetTimestampCreated", {u"", file}), u"1/2/2020 3:04:05 AM");
    using Iterator = std::filesystem::directory_iterator;
    EXPECT_EQ(std::distance(Iterator(folder.path()), Iterator()), 1);
}

TEST_F(Ntfs, WhatMayNotBeReadIsReported) {
    const std::u16string file = folder.file(L"closed\\a.txt", "secret");
    const std::u16string closed = path(L"closed");
    ASSERT_TRUE(set_access(file, L"D:P(D;;FA;;;WD)"));
    for (const char16_t* function : {u"VlFile_GetContents", u"VlFile_GetFileHash"})
        EXPECT_EQ(call(function, {u"", file}), u"$$-47");
    EXPECT_EQ(call(u"VlFile_IsFree", {u"", file}), u"0");
    EXPECT_EQ(call(u"VlFile_SetContentsOfFile", {u"", file, u"x"}), u"$$-47");
    ASSERT_TRUE(set_access(closed, L"D:P(D;;FA;;;WD)"));
    EXPECT_EQ(call(u"VlFile_ListFolder", {u"files", closed}), u"$$5");
    EXPECT_EQ(call(u"VlFile_GetFolderSize", {u"", closed}), u"$$-47");
    EXPECT_EQ(call(u"VlFile_Search", {u"-files", path(), u"a.txt"}), u""); // passed over
    EXPECT_TRUE(set_access(closed, L"D:(A;OICI;FA;;;WD)"));
    EXPECT_TRUE(set_access(file, L"D:(A;;FA;;;WD)"));
    EXPECT_EQ(contents(L"closed\\a.txt"), "secret");
}

// Programs and signatures

class Programs : public RealWindows {
  protected:
    const char* missing_in_wine() const override {
        return "signed programs, and lets running ones be deleted";
    }
    std::u16string signature(const std::u16string& file) {
        return call(u"VlFile_GetCodeSignInfo", {u"", file});
    }
    // A program of Windows that is signed itself, not by a catalogue; empty where there is none.
    std::u16string signed_program() {
        for (const char16_t* name : {u"\\explorer.exe", u"\\System32\\ntdll.dll",
                                     u"\\System32\\kernel32.dll", u"\\System32\\svchost.exe"}) {
            const std::u16string file = to_utf16(windows_folder()) + name;
            if (signature(file).starts_with(u"Signed: 1"))
                return file;
        }
        return {};
    }
};

TEST_F(Programs, ASignatureThatWindowsTrustsIsValidUntilTheFileChanges) {
    const std::u16string program = signed_program();
    if (program.empty())
        GTEST_SKIP() << "none of the programs looked at has a signature of its own";
    const std::u16string info = signature(program);
    EXPECT_TRUE(info.starts_with(u"Signed: 1\rValid: 1\rSigner: Microsoft")) << to_wide(info);
    EXPECT_EQ(info.find(u"Status:"), info.npos);
    EXPECT_NE(info.find(u"\rIssuer: Microsoft"), info.npos);

    std::string bytes = read_file(to_wide(program));
    ASSERT_GT(bytes.size(), 8192u);
    EXPECT_EQ(signature(folder.file(L"copy.exe", bytes)), info);
    bytes[6000] = static_cast<char>(bytes[6000] + 1);
    const std::u16string changed = signature(folder.file(L"changed.exe", bytes));
    EXPECT_TRUE(changed.starts_with(u"Signed: 1\rValid: 0\rStatus: 0x80096010\r")) // bad digest
        << to_wide(changed);
}

TEST_F(Programs, ARunningOneStays) {
    for (const wchar_t* name : {L"vellhost.exe", L"VellFile.fmx64", L"FMWrapper.dll"})
        std::filesystem::copy_file(executable_folder() + name, folder.path(name));
    const std::u16string program = path(L"vellhost.exe");
    const UniqueHandle process =
        start_program(L"\"" + folder.path(L"vellhost.exe") +
                      L"\" \"VlFile_ExecuteShell( \\\"\\\" ; \\\"ping -n 8 127.0.0.1 >nul\\\" )\"");
    EXPECT_EQ(WaitForSingleObject(process.get(), 1000), DWORD{WAIT_TIMEOUT});
    EXPECT_EQ(call(u"VlFile_DeleteFile", {u"", program}), u"$$-47");
    EXPECT_EQ(call(u"VlFile_ExportToFile", {u"-OverwriteExisting", u"x", program}), u"$$-47");
    EXPECT_EQ(call(u"VlFile_SetContentsOfFile", {u"", program, u"x"}), u"$$-47");
    EXPECT_EQ(call(u"VlFile_IsFree", {u"", program}), u"0");
    EXPECT_EQ(call(u"VlFile_CopyFile", {u"", program, path(L"copy.exe")}), u"0");
    EXPECT_EQ(exit_code(process), 0u);
    EXPECT_EQ(call(u"VlFile_DeleteFile", {u"", program}), u"0");
}

// The machine's own shares, which administrators have without making one.
class Shares : public RealWindows {
  protected:
    const char* missing_in_wine() const override { return "shares of the machine"; }
};

TEST_F(Shares, FilesOnThemAreFound) {
    const std::u16string local = to_utf16(windows_folder());
    const std::u16string share = u"\\\\localhost\\" + local.substr(0, 1) + u"$" + local.substr(2);
    if (!exists(share))
        GTEST_SKIP() << "the share of the system's disk needs an administrator";
    EXPECT_EQ(call(u"VlFile_Exists", {u"", share + u"\\explorer.exe"}), u"1");
    EXPECT_EQ(call(u"VlFile_GetFileHash", {u"", share + u"\\explorer.exe"}),
              call(u"VlFile_GetFileHash", {u"", local + u"\\explorer.exe"}));
    EXPECT_EQ(call(u"VlFile_FullPathToFileSpec", {u"", share + u"\\explorer.exe"}).substr(0, 17),
              u"file://localhost/");
}

// Pictures

// 48 by 32 pixels, red above and blue below.
constexpr const char* webp_picture =
    "UklGRvoAAABXRUJQVlA4WAoAAAAIAAAALwAAHwAAVlA4TBoAAAAvL8AHAA8Q87//8x8OBALJ/tILBBDR/5yPB0VYSUa6"
    "AAAARXhpZgAASUkqAAgAAAAGABIBAwABAAAAAQAAABoBBQABAAAAVgAAABsBBQABAAAAXgAAACgBAwABAAAAAgAAABMC"
    "AwABAAAAAQAAAGmHBAABAAAAZgAAAAAAAAA4YwAA6AMAADhjAADoAwAABgAAkAcABAAAADAyMTABkQcABAAAAAECAwAA"
    "oAcABAAAADAxMDABoAMAAQAAAP//AAACoAQAAQAAADAAAAADoAQAAQAAACAAAAAAAAAA";
constexpr const char* avif_picture =
    "AAAAHGZ0eXBhdmlmAAAAAGF2aWZtaWYxbWlhZgAAAOptZXRhAAAAAAAAACFoZGxyAAAAAAAAAABwaWN0AAAAAAAAAAAA"
    "AAAAAAAAAA5waXRtAAAAAAABAAAAImlsb2MAAAAAREAAAQABAAAAAAEOAAEAAAAAAAAAKgAAACNpaW5mAAAAAAABAAAA"
    "FWluZmUCAAAAAAEAAGF2MDEAAAAAamlwcnAAAABLaXBjbwAAABNjb2xybmNseAACAAIABoAAAAAMYXYxQ4EADAAAAAAU"
    "aXNwZQAAAAAAAAAwAAAAIAAAABBwaXhpAAAAAAMICAgAAAAXaXBtYQAAAAAAAAABAAEEgYIDhAAAADJtZGF0EgAKCRgV"
    "L/sECAgaEDIbGAAAAEDePDI7cX82y5WWQT9vCfl8G+TmKFOw";
constexpr const char* heic_picture =
    "AAAAHGZ0eXBoZWljAAAAAG1pZjFoZWljbWlhZgAAAa1tZXRhAAAAAAAAACFoZGxyAAAAAAAAAABwaWN0AAAAAAAAAAAA"
    "AAAAAAAAAA5waXRtAAAAAAACAAAAEGlkYXQAAAAAADAAIAAAADhpbG9jAQAAAERAAAIAAQAAAAAAAAHRAAEAAAAAAAAA"
    "QQACAAEAAAAAAAAAAQAAAAAAAAAIAAAAOGlpbmYAAAAAAAIAAAAVaW5mZQIAAAEAAQAAaHZjMQAAAAAVaW5mZQIAAAAA"
    "AgAAZ3JpZAAAAADYaXBycAAAALZpcGNvAAAAdmh2Y0MBA3AAAAAAAAAAAAAe8AD8/fj4AAAPAyAAAQAYQAEMAf//A3AA"
    "AAMAkAAAAwAAAwAeugJAIQABACpCAQEDcAAAAwCQAAADAAADAB6gIIEFlurkprm4EBAwIAAAAwAgAAADACEiAAEABkQB"
    "wXPAiQAAABRpc3BlAAAAAAAAAEAAAABAAAAAFGlzcGUAAAAAAAAAMAAAACAAAAAQcGl4aQAAAAADCAgIAAAAGmlwbWEA"
    "AAAAAAAAAgABAoECAAICA4QAAAAaaXJlZgAAAAAAAAAOZGltZwACAAEAAQAAAEltZGF0AAAAPSgBrxOAeXPTSAv/+u8F"
    "f+Vaz/zNyboRP/44VPv25av/WaNQL9hPX3tkw0vwJbLOs9DSwqvox0f3r6A/y3A=";

// What Windows itself says to a picture: whether it has a codec that decodes this file.
HRESULT decoded_by_windows(const std::u16string& file) {
    const ComApartment apartment;
    ComPtr<IWICImagingFactory> factory;
    ComPtr<IWICBitmapDecoder> decoder;
    ComPtr<IWICBitmapFrameDecode> frame;
    HRESULT result = CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                      IID_PPV_ARGS(&factory));
    if (SUCCEEDED(result))
        result = factory->CreateDecoderFromFilename(as_wide(file), nullptr, GENERIC_READ,
                                                    WICDecodeMetadataCacheOnDemand, &decoder);
    if (SUCCEEDED(result))
        result = decoder->GetFrame(0, &frame);
    ComPtr<IWICFormatConverter> pixels;
    if (SUCCEEDED(result))
        result = factory->CreateFormatConverter(&pixels);
    if (SUCCEEDED(result))
        result =
            pixels->Initialize(frame.Get(), GUID_WICPixelFormat32bppBGRA, WICBitmapDitherTypeNone,
                               nullptr, 0, WICBitmapPaletteTypeCustom);
    std::vector<BYTE> bytes(48 * 32 * 4);
    return FAILED(result)
               ? result
               : pixels->CopyPixels(nullptr, 48 * 4, static_cast<UINT>(bytes.size()), bytes.data());
}

class Codecs : public PluginWithFolder {
  protected:
    void expect_picture(const wchar_t* name, const char* base64) {
        const std::u16string file = folder.file(name, bytes_of_base64(base64));
        if (const HRESULT result = decoded_by_windows(file); FAILED(result))
            GTEST_SKIP() << "no codec for " << std::filesystem::path(name).extension() << ", 0x"
                         << std::hex << static_cast<std::uint32_t>(result);
        const std::string contents = read_file(to_wide(file));
        BytesInMemory bytes(contents);
        const auto rows = windows::system().pictures().decode(bytes, 0);
        ASSERT_TRUE(rows) << number(rows.error());
        const pictures::PictureLayout& layout = (*rows)->layout();
        ASSERT_EQ(layout.width, 48u);
        ASSERT_EQ(layout.height, 32u);
        ASSERT_EQ(layout.component_size, 1);
        std::vector<std::byte> row(layout.row_size());
        for (std::uint32_t y = 0; y < 32; ++y) {
            ASSERT_TRUE((*rows)->read_row(row)) << y;
            if (y >= 14 && y <= 17) // lossy codecs mix colours where they meet
                continue;
            const std::size_t strong = y < 16 ? 0 : 2;
            EXPECT_GT(row[strong], std::byte{150}) << y;
            EXPECT_LT(row[2 - strong], std::byte{100}) << y;
        }
    }
};

TEST_F(Codecs, WebP) {
    expect_picture(L"a.webp", webp_picture);
}
TEST_F(Codecs, Heic) {
    expect_picture(L"a.heic", heic_picture);
}
TEST_F(Codecs, Avif) {
    expect_picture(L"a.avif", avif_picture);
}

class ShellPictures : public RealWindows {
  protected:
    const char* missing_in_wine() const override { return "pictures by the shell"; }
};

// Icons have corners that show what is behind them, and many colours.
TEST_F(ShellPictures, IconsHaveTransparencyAndColours) {
    const std::u16string windows = to_utf16(windows_folder());
    for (const std::u16string& item : {windows + u"\\explorer.exe", windows})
        for (const std::uint32_t size : {32u, 48u, 256u}) {
            const auto icon =
                windows::system().pictures().icon({item, {}}, pictures::IconOf::Item, size);
            ASSERT_TRUE(icon) << number(icon.error());
            ASSERT_TRUE(icon->has_alpha);
            std::set<std::uint32_t> colours;
            std::size_t transparent = 0;
            std::size_t opaque = 0;
            for (std::size_t i = 0; i < icon->pixels.size(); i += 4) {
                const std::uint8_t* const pixel = icon->pixels.data() + i;
                transparent += pixel[3] == 0;
                opaque += pixel[3] == 255;
                colours.insert(pixel[0] << 16 | pixel[1] << 8 | pixel[2]);
            }
            EXPECT_GT(transparent, size) << to_wide(item) << ' ' << size;
            EXPECT_GT(opaque, size) << to_wide(item) << ' ' << size;
            EXPECT_GT(colours.size(), 10u) << to_wide(item) << ' ' << size;
        }
}

bool shell_has_thumbnail(const std::wstring& file) {
    const ComApartment apartment;
    ComPtr<IShellItemImageFactory> factory;
    HBITMAP bitmap = nullptr;
    if (FAILED(SHCreateItemFromParsingName(file.c_str(), nullptr, IID_PPV_ARGS(&factory))) ||
        FAILED(factory->GetImage({96, 96}, SIIGBF_THUMBNAILONLY, &bitmap)))
        return false;
    DeleteObject(bitmap);
    return true;
}

// Of a kind of file that nobody here decodes, but the Explorer shows.
TEST_F(ShellPictures, ThumbnailsAreThoseOfTheExplorer) {
    const std::wstring font = windows_folder() + L"\\Fonts\\arial.ttf";
    if (!shell_has_thumbnail(font))
        GTEST_SKIP() << "the Explorer shows no thumbnail of a font here";
    const auto picture = windows::system().pictures().shell_thumbnail({to_utf16(font), {}}, 96);
    ASSERT_TRUE(picture) << number(picture.error());
    EXPECT_EQ(std::max(picture->width, picture->height), 96u);
    const auto& pixels = picture->pixels;
    EXPECT_TRUE(std::ranges::any_of(pixels, [&](std::uint8_t c) { return c != pixels.front(); }));
    EXPECT_EQ(call(u"VlFile_GetTypeOfItem", {u"", to_utf16(font)}), u"file");
}

// Names of devices, which no version of Windows agrees on: files of that name are never made.
TEST_F(PluginWithFolder, NamesOfDevicesAreRefused) {
    for (const wchar_t* name :
         {L"nul", L"con.txt", L"AUX ", L"lpt1.tar.gz", L"COM\u00B9", L"prn.", L"sub\\nul.txt"}) {
        EXPECT_EQ(call(u"VlFile_CreateFile", {u"-CreateFolders", path(name)}), u"$$-37") << name;
        EXPECT_EQ(call(u"VlFile_ExportToFile", {u"", u"x", path(name)}), u"$$-37") << name;
    }
    EXPECT_EQ(call(u"VlFile_CreateFile", {u"", path(L"com.txt")}), u"0");
    EXPECT_EQ(call(u"VlFile_GetContents", {u"", u"NUL"}), u"");
}

} // namespace
} // namespace vell::test
