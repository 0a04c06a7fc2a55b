// Folders by the system's find-first and find-next.
#include "src/system/folder_reader.h"
#include "src/windows/handle.h"
#include "src/windows/parts.h"
#include "src/windows/storage/file_times.h"
#include "src/windows/storage/path.h"
#include "src/windows/storage/reparse_point.h"
#include "src/windows/text.h"

#include <cwchar>
#include <optional>

namespace vell::windows {

using namespace files;

namespace {

SystemError system_error(DWORD error) {
    const auto number = static_cast<std::int32_t>(error);
    return {number, error_from_win32(number)};
}

void assign(std::u16string& text, const wchar_t* wide) {
    text.assign(reinterpret_cast<const char16_t*>(wide), std::wcslen(wide));
}

void copy_entry(const WIN32_FIND_DATAW& found, FolderEntry& entry) {
    assign(entry.name, found.cFileName);
    assign(entry.short_name, found.cAlternateFileName);
    entry.size = std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow;
    entry.is_folder = found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
    entry.is_hidden = found.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN;
    entry.is_link = leads_elsewhere(found);
    entry.is_read_only = found.dwFileAttributes & FILE_ATTRIBUTE_READONLY;
    entry.created = file_time_of(found.ftCreationTime);
    entry.modified = file_time_of(found.ftLastWriteTime);
    entry.accessed = file_time_of(found.ftLastAccessTime);
}

class Win32FolderReader : public FolderReader {
  public:
    // Without a handle the folder has no entry.
    Win32FolderReader(UniqueFind find, const WIN32_FIND_DATAW& first)
        : find_(std::move(find)), found_(first) {}

    Result<std::size_t, SystemError> read(std::span<FolderEntry> entries) override {
        std::size_t count = 0;
        while (find_ && count < entries.size()) {
            copy_entry(found_, entries[count++]);
            if (FindNextFileW(find_.get(), &found_))
                continue;
            // The entries before a failure are given first.
            const DWORD error = GetLastError();
            find_.reset();
            if (error != ERROR_NO_MORE_FILES)
                failure_ = system_error(error);
        }
        if (count == 0 && failure_)
            return Failure{*failure_};
        return count;
    }

  private:
    UniqueFind find_;
    WIN32_FIND_DATAW found_; // the next entry
    std::optional<SystemError> failure_;
};

class Win32FolderSource : public FolderSource {
  public:
    Result<std::unique_ptr<FolderReader>, SystemError>
    open_folder(const std::u16string& path) override {
        const bool separated = path.ends_with(u'\\');
        const params::NativePath pattern{path + (separated ? u"*.*" : u"\\*.*"), {}};
        WIN32_FIND_DATAW first;
        // In large pieces: over a network each is a conversation.
        UniqueFind find(FindFirstFileExW(win32_path(pattern).c_str(), FindExInfoStandard, &first,
                                         FindExSearchNameMatch, nullptr,
                                         FIND_FIRST_EX_LARGE_FETCH));
        if (!find) {
            const DWORD error = GetLastError();
            if (error != ERROR_FILE_NOT_FOUND && error != ERROR_NO_MORE_FILES)
                return Failure{system_error(error)};
            first = {};
        }
        return std::unique_ptr<FolderReader>(
            std::make_unique<Win32FolderReader>(std::move(find), first));
    }
};

} // namespace

FolderSource& folders() {
    static Win32FolderSource instance;
    return instance;
}

} // namespace vell::windows
