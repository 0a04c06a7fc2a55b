#include "src/windows/documents/encoding_data.h"

#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/documents/encoding_data.h"
#include "src/windows/desktop/com.h"
#include "src/windows/documents/encoding_folder.h"
#include "src/windows/storage/path.h"
#include "src/windows/storage/private_folder.h"
#include "src/windows/system.h"
#include "src/windows/text.h"

#include <shlobj.h>
#include <vell_encoding_data_key.h>

#include <utility>

extern "C" {
// encoding_data.S
extern const char vell_encoding_data[];
extern const char vell_encoding_data_end[];
}

namespace vell::windows {
namespace {

// A path that no file can have.
constexpr const char* nowhere = "\\\\?\\|";

std::wstring local_application_data() {
    wchar_t* found = nullptr;
    const HRESULT result = SHGetKnownFolderPath(FOLDERID_LocalAppData, 0, nullptr, &found);
    const UniqueTaskText owner(found);
    return SUCCEEDED(result) ? std::wstring(found) : std::wstring();
}

// In the form without a limit of length, which also keeps Windows from reading names in it as
// devices.
std::wstring full_path(const std::wstring& path) {
    const auto full = full_wide_path(path);
    return without_length_limit(full ? *full : path);
}

// Another process may be unpacking there: a file that it has just put in its place is its own for a
// moment.
Result<void> unpack_into(const files::NativePath& folder) {
    constexpr int most_attempts = 6;
    constexpr DWORD first_delay_ms = 10;
    const std::string_view archive(
        vell_encoding_data, static_cast<std::size_t>(vell_encoding_data_end - vell_encoding_data));
    for (int attempt = 1;; ++attempt) {
        Result<void> outcome = documents::unpack_missing(system(), archive, folder);
        if (outcome || outcome.error() != ErrorCode::Busy || attempt == most_attempts)
            return outcome;
        Sleep(first_delay_ms << attempt);
    }
}

Result<EncodingData> unpack_below(const std::wstring& base) {
    const std::wstring path =
        full_path(base + L"\\Vell File\\poppler-data-" VELL_ENCODING_DATA_KEY);
    const files::NativePath folder{to_utf16(path), std::nullopt};
    VELL_TRY(unpack_into(folder));
    EncodingData data;
    data.folder = utf8_from_utf16(folder.wide);
    return data;
}

// In a folder of this user alone, whose name others may know but which they cannot have made.
Result<EncodingData> unpack_in_shared_place(const std::wstring& temporary) {
    const std::wstring base = full_path(temporary + L"\\Vell File " + VELL_TRY(user_identifier()));
    UniqueFile guard = VELL_TRY(open_private_folder(base));
    EncodingData data = VELL_TRY(unpack_below(base));
    data.guard = std::move(guard);
    return data;
}

} // namespace

DataPlaces data_places() {
    const Result<std::wstring> temporary = temporary_folder();
    return {local_application_data(), temporary ? *temporary : std::wstring()};
}

EncodingData provide_encoding_data(const DataPlaces& places, std::vector<std::string>& notes) {
    const auto note = [&notes](const std::wstring& place, ErrorCode code) {
        notes.push_back("PDF: the encoding data could not be unpacked into " +
                        utf8_from_utf16(to_utf16(place)) + " (" +
                        to_text(std::int64_t{number(code)}) + ")");
    };
    if (!places.local.empty()) {
        auto data = unpack_below(places.local);
        if (data)
            return std::move(*data);
        note(places.local, data.error());
    }
    if (!places.temporary.empty()) {
        auto data = unpack_in_shared_place(places.temporary);
        if (data)
            return std::move(*data);
        note(places.temporary, data.error());
    }
    EncodingData none;
    none.folder = nowhere;
    return none;
}

const std::string& encoding_folder(std::vector<std::string>& notes) {
    static const EncodingData data = provide_encoding_data(data_places(), notes);
    return data.folder;
}

} // namespace vell::windows
