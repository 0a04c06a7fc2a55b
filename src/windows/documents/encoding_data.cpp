#include "src/windows/documents/encoding_data.h"

#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/documents/encoding_data.h"
#include "src/windows/desktop/com.h"
#include "src/windows/storage/path.h"
#include "src/windows/system.h"
#include "src/windows/text.h"

#include <shlobj.h>

#include <array>

extern "C" {
// encoding_data.S
extern const char vell_encoding_data[];
extern const char vell_encoding_data_end[];
}

namespace vell::windows {
namespace {

// The variable goes first, as it does for most programs.
std::wstring local_application_data() {
    std::array<wchar_t, 32'767> value;
    const DWORD length =
        GetEnvironmentVariableW(L"LOCALAPPDATA", value.data(), static_cast<DWORD>(value.size()));
    if (length > 0 && length < value.size())
        return {value.data(), length};
    wchar_t* found = nullptr;
    const HRESULT result = SHGetKnownFolderPath(FOLDERID_LocalAppData, 0, nullptr, &found);
    const UniqueTaskText owner(found);
    return SUCCEEDED(result) ? std::wstring(found) : std::wstring();
}

// In the form without a limit of length, which also keeps Windows from reading names in it as
// devices.
files::NativePath data_folder(const std::wstring& base) {
    std::wstring path = base + L"\\Vell File\\poppler-data-" VELL_ENCODING_DATA_KEY;
    if (const auto full = full_wide_path(path))
        path = *full;
    return {to_utf16(without_length_limit(path)), std::nullopt};
}

std::wstring temporary_folder_or_nothing() {
    const Result<std::wstring> folder = temporary_folder();
    return folder ? *folder : std::wstring();
}

} // namespace

std::string provide_encoding_data(std::vector<std::string>& notes) {
    const std::string_view archive(
        vell_encoding_data, static_cast<std::size_t>(vell_encoding_data_end - vell_encoding_data));
    std::string folder;
    for (const std::wstring& base : {local_application_data(), temporary_folder_or_nothing()}) {
        if (base.empty())
            continue;
        const files::NativePath path = data_folder(base);
        folder = utf8_from_utf16(path.wide);
        const Result<void> outcome = documents::unpack_missing(system(), archive, path);
        if (outcome)
            break;
        notes.push_back("PDF: the encoding data could not be unpacked into " + folder + " (" +
                        to_text(std::int64_t{number(outcome.error())}) + ")");
    }
    return folder;
}

} // namespace vell::windows
