// The finished plug-in file, as Windows and the host read it.
#include "src/windows/handle.h"
#include "tests/windows/plugin_fixture.h"

#include <algorithm>
#include <map>
#include <set>

namespace vell::test {
namespace {

// An image that the loader mapped without resolving anything.
class Image {
  public:
    explicit Image(const wchar_t* name)
        : module_(LoadLibraryExW(name, nullptr, DONT_RESOLVE_DLL_REFERENCES)) {}

    explicit operator bool() const { return static_cast<bool>(module_); }

    const IMAGE_NT_HEADERS64& headers() const {
        const auto* dos = at<IMAGE_DOS_HEADER>(0);
        return *at<IMAGE_NT_HEADERS64>(static_cast<DWORD>(dos->e_lfanew));
    }

    // Functions by library, in lower case as libraries are found.
    std::map<std::string, std::set<std::string>> imports() const {
        std::map<std::string, std::set<std::string>> result;
        const auto* entry = at<IMAGE_IMPORT_DESCRIPTOR>(directory(IMAGE_DIRECTORY_ENTRY_IMPORT));
        for (; entry->Name != 0; ++entry) {
            std::string library = at<char>(entry->Name);
            std::ranges::transform(library, library.begin(),
                                   [](char c) { return static_cast<char>(std::tolower(c)); });
            const auto* thunk = at<IMAGE_THUNK_DATA64>(entry->OriginalFirstThunk);
            for (; thunk->u1.AddressOfData != 0; ++thunk)
                result[library].insert(
                    at<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(thunk->u1.AddressOfData))->Name);
        }
        return result;
    }

    std::set<std::string> exports() const {
        std::set<std::string> result;
        const auto* table = at<IMAGE_EXPORT_DIRECTORY>(directory(IMAGE_DIRECTORY_ENTRY_EXPORT));
        const auto* names = at<DWORD>(table->AddressOfNames);
        for (DWORD i = 0; i < table->NumberOfNames; ++i)
            result.insert(at<char>(names[i]));
        EXPECT_EQ(table->NumberOfFunctions, table->NumberOfNames);
        return result;
    }

  private:
    template <typename T>
    const T* at(DWORD offset) const {
        return reinterpret_cast<const T*>(reinterpret_cast<const char*>(module_.get()) + offset);
    }
    DWORD directory(int index) const {
        return headers().OptionalHeader.DataDirectory[index].VirtualAddress;
    }

    UniqueModule module_;
};

TEST(PluginFile, IsSelfContainedAndExportsOneFunction) {
    const Image plugin(L"VellFile.fmx64");
    ASSERT_TRUE(plugin);
    EXPECT_EQ(plugin.headers().FileHeader.Machine, IMAGE_FILE_MACHINE_AMD64);
    EXPECT_EQ(plugin.exports(), std::set<std::string>{"FMExternCallProc"});

    const auto imports = plugin.imports();
    const std::set<std::string> of_windows{
        "advapi32.dll", // the registry, for Poppler
        "bcrypt.dll",   // checksums
        "crypt32.dll",  // certificates
        "gdi32.dll",    // bitmaps of icons, and those that the shell gives
        "kernel32.dll", //
        "mpr.dll",      // connections to shared volumes
        "msvcrt.dll",   //
        "ntdll.dll",    // items by their names in open folders
        "ole32.dll",    // COM, for the shell
        "shell32.dll",  // descriptions of file types
        "user32.dll",   //
        "wintrust.dll", // signatures
    };
    for (const auto& [library, functions] : imports)
        EXPECT_TRUE(library == "fmwrapper.dll" || of_windows.contains(library)) << library;

    // What an older host lacks must not be needed to load.
    const std::set<std::string> host_functions = Image(L"FMWrapper.dll").exports();
    for (const std::string& function : imports.at("fmwrapper.dll")) {
        EXPECT_TRUE(host_functions.contains(function)) << function;
        EXPECT_TRUE(function.starts_with("FM_")) << function;
    }
    for (const char* late :
         {"FM_ExprEnv_RegisterExternalFunctionEx", "FM_ExprEnv_RegisterScriptStep",
          "FM_ExprEnv_UnRegisterScriptStep", "FM_FixPt_AssignInt64", "FM_BinaryData_AddFNAMData",
          "FM_BinaryData_GetFNAMData", "FM_BinaryData_AddSIZEData", "FM_BinaryData_GetSIZEData"})
        EXPECT_FALSE(imports.at("fmwrapper.dll").contains(late)) << late;
}

TEST(PluginFile, CarriesItsVersion) {
    const wchar_t* const name = L"VellFile.fmx64";
    std::vector<char> block(GetFileVersionInfoSizeW(name, nullptr));
    ASSERT_TRUE(GetFileVersionInfoW(name, 0, static_cast<DWORD>(block.size()), block.data()));
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &length));
    EXPECT_EQ(fixed->dwFileVersionMS, DWORD{14} << 16);
    EXPECT_EQ(fixed->dwFileVersionLS, DWORD{508});
    EXPECT_EQ(plugin::build_number, 508);
}

} // namespace
} // namespace vell::test
