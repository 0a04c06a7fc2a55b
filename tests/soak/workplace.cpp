#include "tests/soak/workplace.h"

#include <windows.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace vell::soak {
namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t longest_file = 2U << 20U; // longer ones would be most of the work

std::vector<fs::path> files_below(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code error;
    for (const fs::directory_entry& item : fs::recursive_directory_iterator(folder, error))
        if (item.is_regular_file(error) && item.file_size(error) <= longest_file)
            files.push_back(item.path());
    std::ranges::sort(files); // folders are listed in another order elsewhere
    return files;
}

fs::path new_folder() {
    for (int i = 0;; ++i) {
        fs::path folder =
            fs::temp_directory_path() /
            (L"vell_soak_" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(i));
        if (fs::create_directory(folder))
            return folder;
    }
}

} // namespace

Workplace::Workplace(const fs::path& examples, const fs::path& corpus, std::size_t most,
                     std::uint64_t seed)
    : folder_(new_folder()), examples_(folder_ / L"examples") {
    fs::copy(examples, examples_, fs::copy_options::recursive);
    std::vector<fs::path> files = files_below(corpus.empty() ? examples : corpus);
    Random random(seed);
    for (std::size_t i = files.size(); i > 1; --i)
        std::swap(files[i - 1], files[below(i, random)]);
    if (files.size() > most)
        files.resize(most);
    fs::create_directory(folder_ / L"corpus");
    for (std::size_t i = 0; i < files.size(); ++i) {
        // A number keeps names apart; names with other characters than these would be read
        // differently in calculations.
        std::wstring name = std::to_wstring(i) + L"_" + files[i].filename().wstring();
        std::ranges::replace_if(
            name, [](wchar_t c) { return c == L'"' || c == L'{' || c == L'}'; }, L'_');
        corpus_.push_back(folder_ / L"corpus" / name);
        write_bytes(corpus_.back(), read_bytes(files[i]));
    }
}

Workplace::~Workplace() {
    delete_all(folder_);
}

fs::path Workplace::examples_for(const std::wstring& name) const {
    fs::path folder = folder_ / (L"examples_" + name);
    fs::copy(examples_, folder, fs::copy_options::recursive);
    return folder;
}

fs::path Workplace::empty_folder(const std::wstring& name) const {
    fs::path folder = folder_ / name;
    delete_all(folder);
    fs::create_directories(folder);
    return folder;
}

void delete_all(const fs::path& folder) {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
    if (!fs::exists(folder, ignored))
        return;
    for (const fs::directory_entry& item : fs::recursive_directory_iterator(folder, ignored))
        SetFileAttributesW(item.path().c_str(), FILE_ATTRIBUTE_NORMAL);
    fs::remove_all(folder, ignored);
}

std::string read_bytes(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write_bytes(const fs::path& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::u16string folder_text(const fs::path& folder) {
    return folder.u16string() + u"\\";
}

} // namespace vell::soak
