#include "src/metadata/writing/tiff_appender.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vell::metadata {
namespace {

constexpr std::size_t most_entries = std::numeric_limits<std::uint16_t>::max();
constexpr std::uint64_t most_bytes = std::numeric_limits<std::uint32_t>::max();

class Appender {
  public:
    Appender(ExifBlock& block, std::uint64_t file_size) : block_(block), file_size_(file_size) {}

    Result<void> run() {
        VELL_TRY(append(DirectoryKind::Interoperability));
        point_to(DirectoryKind::Exif, tiff::tag::interoperability_directory);
        VELL_TRY(append(DirectoryKind::Exif));
        point_to(DirectoryKind::Main, tiff::tag::exif_directory);
        VELL_TRY(append(DirectoryKind::Gps));
        point_to(DirectoryKind::Main, tiff::tag::gps_directory);
        return append(DirectoryKind::Main);
    }

    std::string take_bytes() { return std::move(bytes_); }
    std::uint32_t last_directory() const { return static_cast<std::uint32_t>(*last_directory_); }

  private:
    // Where those bytes come to stand: on a word boundary (TIFF 6.0, section 2).
    Result<std::size_t> put(std::string_view bytes) {
        if ((file_size_ + bytes_.size()) % 2 != 0)
            bytes_ += '\0';
        const std::uint64_t place = file_size_ + bytes_.size();
        if (place + bytes.size() > most_bytes)
            return Failure{ErrorCode::ResourceTooLarge};
        bytes_ += bytes;
        return static_cast<std::size_t>(place);
    }

    // Values stand behind their directory, where all readers look for them.
    Result<void> append(DirectoryKind kind) {
        last_directory_.reset();
        ChangeableDirectory& directory = block_.directory(kind);
        if (!directory.is_changed || (directory.entries.empty() && kind != DirectoryKind::Main))
            return {};
        if (directory.entries.size() > most_entries)
            return Failure{ErrorCode::ResourceTooLarge};
        const std::size_t place = VELL_TRY(put(std::string(directory.table_size(), '\0')));
        for (ChangeableEntry& candidate : directory.entries)
            if (candidate.new_value && !candidate.entry.is_inline())
                candidate.entry.set_offset(VELL_TRY(put(*candidate.new_value)), block_.order());
        const std::string table = directory.table_bytes(block_.order());
        bytes_.replace(static_cast<std::size_t>(place - file_size_), table.size(), table);
        last_directory_ = place;
        return {};
    }

    // The parent has the entry, the last one of which is followed.
    void point_to(DirectoryKind parent, std::uint16_t tag) {
        if (!last_directory_)
            return;
        auto& entries = block_.directory(parent).entries;
        const auto last =
            std::find_if(entries.rbegin(), entries.rend(), [&](const ChangeableEntry& candidate) {
                return candidate.entry.tag == tag;
            });
        if (last->entry.type != tiff::ifd_offset)
            last->entry.type = FieldType::Long;
        last->entry.count = 1;
        last->entry.set_offset(*last_directory_, block_.order());
    }

    ExifBlock& block_;
    std::uint64_t file_size_;
    std::string bytes_;
    std::optional<std::size_t> last_directory_; // where the one that was appended last stands
};

} // namespace

Result<void> append_directories(ExifBlock& block, FileEdits& edits) {
    Appender appender(block, edits.file_size());
    VELL_TRY(appender.run());
    std::string first_directory;
    append_integer<std::uint32_t>(first_directory, appender.last_directory(), block.order());
    constexpr std::uint64_t pointer_start = tiff::Header::size - sizeof(std::uint32_t);
    edits.put(pointer_start, tiff::Header::size, std::move(first_directory));
    edits.put(edits.file_size(), edits.file_size(), appender.take_bytes());
    return {};
}

} // namespace vell::metadata
