#include "src/files/listing/folder_size.h"

#include <utility>
#include <vector>

namespace vell::files {
namespace {

// Adds the files of one folder to `total`, its sub-folders to `pending`.
Result<void, SystemError> count_folder(FolderSource& source, const std::u16string& folder,
                                       std::vector<FolderEntry>& batch,
                                       std::vector<std::u16string>& pending, std::uint64_t& total) {
    const std::unique_ptr<FolderReader> reader = VELL_TRY(source.open_folder(folder));
    while (const std::size_t count = VELL_TRY(reader->read(batch))) {
        for (const FolderEntry& entry : std::span(batch).first(count)) {
            if (entry.is_link || entry.name == u"." || entry.name == u"..")
                continue;
            if (entry.is_folder)
                pending.push_back(folder + entry.name + u'\\');
            else
                total += entry.size;
        }
    }
    return {};
}

} // namespace

Result<std::uint64_t> folder_size(FolderSource& source, const std::u16string& folder) {
    std::vector<FolderEntry> batch(FolderSource::batch_size);
    std::vector<std::u16string> pending{folder};
    std::uint64_t total = 0;
    while (!pending.empty()) {
        const std::u16string next = std::move(pending.back());
        pending.pop_back();
        if (const auto counted = count_folder(source, next, batch, pending, total); !counted)
            return Failure{counted.error().code};
    }
    return total;
}

} // namespace vell::files
