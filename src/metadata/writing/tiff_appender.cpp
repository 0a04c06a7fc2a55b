#include "src/metadata/writing/tiff_appender.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <utility>

namespace vell::metadata {
namespace {

constexpr std::size_t most_entries = std::numeric_limits<std::uint16_t>::max();
constexpr std::uint64_t longest_file = std::numeric_limits<std::uint32_t>::max();

class Appender {
  public:
    Appender(ExifBlock& block, FileEdits& edits)
        : block_(block), edits_(edits), file_size_(edits.file_size()), end_(file_size_) {}

    Result<void> run() {
        VELL_TRY(append(DirectoryKind::Interoperability));
        point_to(DirectoryKind::Exif, tiff::tag::interoperability_directory);
        VELL_TRY(append(DirectoryKind::Exif));
        point_to(DirectoryKind::Main, tiff::tag::exif_directory);
        VELL_TRY(append(DirectoryKind::Gps));
        point_to(DirectoryKind::Main, tiff::tag::gps_directory);
        return append(DirectoryKind::Main);
    }

    std::uint32_t last_directory() const { return static_cast<std::uint32_t>(*last_directory_); }

  private:
    // Where so many bytes come to stand: on a word boundary (TIFF 6.0, section 2).
    Result<std::uint64_t> take_place(std::uint64_t size, FileEdits& edits) {
        if (end_ % 2 != 0) {
            edits.put(file_size_, file_size_, std::string(1, '\0'));
            ++end_;
        }
        if (end_ + size > longest_file)
            return Failure{ErrorCode::ResourceTooLarge};
        return std::exchange(end_, end_ + size);
    }

    // Values stand behind their directory, where all readers look for them. Each is a part of the
    // copy by itself, so that none is held twice.
    Result<void> append(DirectoryKind kind) {
        last_directory_.reset();
        ChangeableDirectory& directory = block_.directory(kind);
        if (!directory.is_changed || (directory.entries.empty() && kind != DirectoryKind::Main))
            return {};
        if (directory.entries.size() > most_entries)
            return Failure{ErrorCode::ResourceTooLarge};
        FileEdits values(file_size_);
        const std::uint64_t place = VELL_TRY(take_place(directory.table_size(), edits_));
        for (ChangeableEntry& candidate : directory.entries)
            if (!candidate.entry.is_inline())
                VELL_TRY(append_value(candidate, values));
        edits_.put(file_size_, file_size_, directory.table_bytes(block_.order()));
        edits_.add(std::move(values));
        last_directory_ = place;
        return {};
    }

    Result<void> append_value(ChangeableEntry& candidate, FileEdits& values) {
        if (!candidate.new_value && !candidate.follows)
            return {};
        const std::uint64_t size = candidate.entry.value_size();
        const std::uint64_t start = candidate.entry.offset(block_.order());
        candidate.entry.set_offset(VELL_TRY(take_place(size, values)), block_.order());
        if (candidate.new_value)
            values.put(file_size_, file_size_, *std::move(candidate.new_value));
        else
            values.repeat(file_size_, start, start + size);
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
    FileEdits& edits_;
    const std::uint64_t file_size_;
    std::uint64_t end_;                           // of what has been appended
    std::optional<std::uint64_t> last_directory_; // where the one that was appended last stands
};

} // namespace

Result<void> append_directories(ExifBlock& block, FileEdits& edits) {
    Appender appender(block, edits);
    VELL_TRY(appender.run());
    std::string first_directory;
    append_integer<std::uint32_t>(first_directory, appender.last_directory(), block.order());
    constexpr std::uint64_t pointer_start = tiff::Header::size - sizeof(std::uint32_t);
    edits.put(pointer_start, tiff::Header::size, std::move(first_directory));
    return {};
}

} // namespace vell::metadata
