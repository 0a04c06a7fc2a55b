#include "src/metadata/writing/tiff_place.h"

#include "src/base/ascii.h"
#include "src/formats/tiff/directory.h"
#include "src/formats/tiff/numbers.h"
#include "src/metadata/faults.h"
#include "src/metadata/reading/tag_reader.h"
#include "src/metadata/tag_table.h"
#include "src/metadata/writing/edited_place.h"
#include "src/metadata/writing/exif_block.h"
#include "src/metadata/writing/photoshop_block.h"
#include "src/metadata/writing/tiff_appender.h"
#include "src/metadata/writing/xmp_writer.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace vell::metadata {
namespace {

using formats::Window;

// Behind the header: "CR", and the byte order once more.
constexpr std::uint32_t canon_mark = 0x4352;
constexpr std::uint32_t phase_one_marks[] = {0x49494949, 0x4D4D4D4D};

constexpr std::uint16_t image_width = 256;
constexpr std::uint16_t photometric_interpretation = 262;
constexpr std::uint16_t image_resources = 34377;
constexpr std::uint16_t dng_version = 50706;
constexpr std::size_t most_sub_directories = 16;
// Some readers look for these only behind the directory, and so they follow it to a new place.
constexpr std::uint16_t following_tags[] = {tiff::tag::xmp_packet, tiff::tag::iptc_block,
                                            tiff::tag::icc_profile};

// Extensions of raw photographs whose header is that of TIFF.
constexpr std::u16string_view raw_extensions[] = {
    u".3fr", u".arw", u".cap", u".cr2", u".dcr", u".erf", u".fff", u".iiq",
    u".k25", u".kdc", u".mef", u".mos", u".nef", u".nrw", u".orf", u".pef",
    u".raw", u".rw2", u".rwl", u".sr2", u".srf", u".srw"};

bool has_raw_extension(std::u16string_view file_name) {
    return std::ranges::any_of(raw_extensions, [&](std::u16string_view extension) {
        const std::size_t rest = file_name.size() - std::min(extension.size(), file_name.size());
        return equal_ignoring_case(file_name.substr(rest), extension);
    });
}

// Values of a colour filter array, and of one that is interpolated already (TIFF/EP; DNG).
bool is_sensor_data(std::uint32_t photometric) {
    return photometric == 32803 || photometric == 34892;
}

Result<bool> holds_sensor_data(const Window& file, const tiff::Entry& entry, ByteOrder order) {
    if (entry.tag != photometric_interpretation)
        return false;
    const auto numbers = VELL_TRY(coded(tiff::read_numbers(file, entry, order, 1)));
    return !numbers.empty() && is_sensor_data(numbers[0]);
}

// Whether one of the directories that the entry lists has sensor data.
Result<bool> leads_to_sensor_data(const Window& file, const tiff::Entry& list, ByteOrder order) {
    const auto offsets =
        VELL_TRY(coded(tiff::read_numbers(file, list, order, most_sub_directories)));
    for (const std::uint32_t offset : offsets) {
        const auto directory = VELL_TRY(coded(if_sound(tiff::Directory::at(file, offset, order))));
        if (!directory)
            continue;
        for (const tiff::Entry& entry : VELL_TRY(coded(directory->entries())))
            if (VELL_TRY(holds_sensor_data(file, entry, order)))
                return true;
    }
    return false;
}

// Where the strips of a picture stand, or its tiles.
struct ImageDataTags {
    std::uint16_t offsets;
    std::uint16_t sizes;
};
constexpr ImageDataTags image_data_tags[] = {{273, 279}, {324, 325}};

// EndOfFile for a picture that is cut off: what would be put behind the file would become part of
// it.
Result<void> check_image_data(const Window& file, ExifBlock& block) {
    constexpr std::size_t most_parts = 1 << 20;
    ChangeableDirectory& directory = block.directory(DirectoryKind::Main);
    for (const ImageDataTags& tags : image_data_tags) {
        const ChangeableEntry* starts = directory.find(tags.offsets);
        const ChangeableEntry* lengths = directory.find(tags.sizes);
        if (starts == nullptr || lengths == nullptr)
            continue;
        const auto offsets =
            VELL_TRY(coded(tiff::read_numbers(file, starts->entry, block.order(), most_parts)));
        const auto sizes =
            VELL_TRY(coded(tiff::read_numbers(file, lengths->entry, block.order(), most_parts)));
        for (std::size_t i = 0; i < std::min(offsets.size(), sizes.size()); ++i)
            if (std::uint64_t{offsets[i]} + sizes[i] > file.size())
                return Failure{ErrorCode::EndOfFile};
    }
    return {};
}

// The same for a value or a next directory that would come to stand in what is put there.
Result<void> check_values(const Window& file, ExifBlock& block, DirectoryKind kind) {
    const ChangeableDirectory& directory = block.directory(kind);
    const std::uint64_t next = directory.next;
    if (next + tiff::Directory::count_size > file.size())
        return Failure{ErrorCode::EndOfFile};
    for (const ChangeableEntry& candidate : directory.entries) {
        const std::uint64_t offset = candidate.entry.offset(block.order());
        if (!candidate.entry.is_inline() && offset + candidate.entry.value_size() > file.size())
            return Failure{ErrorCode::EndOfFile};
    }
    return {};
}

// Not a picture that TIFF describes: a raw photograph of a maker's own kind, by its name or by what
// its directories hold, or tags without a picture.
Result<bool> is_foreign(Window file, ExifBlock& block, std::u16string_view file_name) {
    file.seek(tiff::Header::size);
    const std::uint32_t mark =
        VELL_TRY(coded(if_sound(file.read_integer<std::uint32_t>(ByteOrder::Big)))).value_or(0);
    const bool is_marked =
        mark >> 16 == canon_mark || std::ranges::count(phase_one_marks, mark) > 0;
    ChangeableDirectory& directory = block.directory(DirectoryKind::Main);
    if (is_marked || has_raw_extension(file_name) || directory.find(image_width) == nullptr)
        return true;
    if (directory.find(dng_version) != nullptr)
        return false;
    for (const ChangeableEntry& candidate : directory.entries)
        if (VELL_TRY(holds_sensor_data(file, candidate.entry, block.order())) ||
            (candidate.entry.tag == tiff::tag::sub_directories &&
             VELL_TRY(leads_to_sensor_data(file, candidate.entry, block.order()))))
            return true;
    return false;
}

constexpr DirectoryKind all_directories[] = {DirectoryKind::Main, DirectoryKind::Exif,
                                             DirectoryKind::Gps, DirectoryKind::Interoperability};

std::uint16_t tag_of(BlockKind kind) {
    return kind == BlockKind::Xmp    ? tiff::tag::xmp_packet
           : kind == BlockKind::Iptc ? tiff::tag::iptc_block
                                     : image_resources;
}

class TiffPlace final : public EditedPlace {
  public:
    TiffPlace(const Window& file, ExifBlock block, BlockKind kind)
        : EditedPlace(file.size()), block_(std::move(block)), kind_(kind) {}

    Result<void> find(const Window& file);

    BlockRules rules() const override { return {.in_resources = kind_ == BlockKind::ImageUrl}; }
    Result<bool> put_tags(files::BufferedReader& file, std::span<const TaggedSection> sections,
                          MakerNote maker_note, const TextStore& store) override;

  protected:
    Result<void> edit(std::string block) override;

  private:
    ChangeableDirectory& directory() { return block_.directory(DirectoryKind::Main); }
    Result<std::optional<std::string>> value(const Window& file, std::uint16_t tag);
    void let_follow();
    Result<void> check_size();
    Result<void> forget_what_stays(const Window& file);
    void set(std::uint16_t tag, std::string bytes);
    Result<bool> append();

    ExifBlock block_;
    BlockKind kind_;
    std::string resources_; // beside IPTC, where they hold it too
};

Result<void> TiffPlace::find(const Window& file) {
    if (kind_ == BlockKind::Exif) {
        is_there_ = true;
        VELL_TRY(block_.read_directories_below(file));
        for (const DirectoryKind kind : all_directories)
            VELL_TRY(check_values(file, block_, kind));
        return {};
    }
    auto block = VELL_TRY(value(file, tag_of(kind_)));
    is_there_ = block.has_value();
    content_ = std::move(block).value_or(std::string());
    if (kind_ != BlockKind::Iptc)
        return {};
    std::string resources = VELL_TRY(value(file, image_resources)).value_or(std::string());
    const std::string_view datasets = find_resource(resources, photoshop::ResourceId::Iptc);
    if (datasets.empty())
        return {};
    if (!is_there_)
        content_ = datasets;
    is_there_ = true;
    resources_ = std::move(resources);
    return {};
}

void TiffPlace::let_follow() {
    std::uint64_t room = longest_block; // of what the file grows by with each change
    for (const std::uint16_t tag : following_tags) {
        ChangeableEntry* found = directory().find(tag);
        const bool stays = found != nullptr && !found->new_value && !found->entry.is_inline();
        if (!stays || found->entry.value_size() > room)
            continue;
        room -= found->entry.value_size();
        found->follows = true;
    }
}

// Whether anything has changed.
Result<bool> TiffPlace::append() {
    if (!block_.link_directories())
        return false;
    let_follow();
    VELL_TRY(append_directories(block_, edits_));
    return true;
}

// nullopt without the tag.
Result<std::optional<std::string>> TiffPlace::value(const Window& file, std::uint16_t tag) {
    const ChangeableEntry* found = directory().find(tag);
    if (found == nullptr)
        return std::optional<std::string>();
    if (found->entry.value_size() > longest_block)
        return Failure{ErrorCode::ResourceTooLarge};
    std::string bytes = VELL_TRY(
        coded(tiff::read_value(file, found->entry, block_.order(), found->entry.value_size())));
    if (bytes.size() < found->entry.value_size())
        return Failure{ErrorCode::EndOfFile};
    return std::optional(std::move(bytes));
}

void TiffPlace::set(std::uint16_t tag, std::string bytes) {
    ChangeableEntry* found = directory().find(tag);
    if (bytes.empty()) {
        if (found != nullptr)
            directory().erase(*found);
        return;
    }
    const FieldType type = tag == tiff::tag::xmp_packet ? FieldType::Byte : FieldType::Undefined;
    if (found != nullptr)
        directory().set(*found, type, std::move(bytes));
    else
        directory().add(tag, type, std::move(bytes));
}

Result<void> TiffPlace::edit(std::string block) {
    if (!resources_.empty())
        set(image_resources,
            VELL_TRY(with_resource(resources_, photoshop::ResourceId::Iptc, block)));
    std::string().swap(resources_);
    set(tag_of(kind_), std::move(block));
    VELL_TRY(append());
    return {};
}

// Those that are told as text are held in memory.
Result<void> TiffPlace::check_size() {
    std::uint64_t size = 0;
    for (const DirectoryKind kind : all_directories)
        for (const ChangeableEntry& candidate : block_.directory(kind).entries) {
            const TagFamily family =
                kind == DirectoryKind::Gps ? TagFamily::Gps : TagFamily::General;
            if (is_printed(category_of(family, candidate.entry.tag), true))
                size += candidate.entry.value_size();
        }
    return size > longest_block ? Result<void>(Failure{ErrorCode::ResourceTooLarge})
                                : Result<void>();
}

// A value may be given in other words than it reads in. What has the same bytes as before needs no
// new place.
Result<void> TiffPlace::forget_what_stays(const Window& file) {
    for (const DirectoryKind kind : all_directories) {
        ChangeableDirectory& changed = block_.directory(kind);
        for (ChangeableEntry& candidate : changed.entries) {
            const auto& old = candidate.old;
            if (!candidate.new_value || !old || old->type != candidate.entry.type ||
                old->count != candidate.entry.count)
                continue;
            const std::string bytes = VELL_TRY(
                coded(tiff::read_value(file, *old, block_.order(), candidate.new_value->size())));
            if (bytes != *candidate.new_value)
                continue;
            candidate.entry = *old;
            candidate.new_value.reset();
        }
        changed.is_changed = changed.is_changed && !changed.is_as_read();
    }
    return {};
}

Result<bool> TiffPlace::put_tags(files::BufferedReader& file,
                                 std::span<const TaggedSection> sections, MakerNote maker_note,
                                 const TextStore& store) {
    VELL_TRY(check_size());
    std::optional<ErrorCode> failure;
    const auto tags = [&](const ExifReadOptions& options, TextEncoding encoding,
                          MetadataText& text) {
        file.seek(0);
        const Result<void> done = read_tags(file, options, encoding, text);
        const bool is_damage = done || done.error() == ErrorCode::EndOfFile ||
                               done.error() == ErrorCode::CorruptStructure;
        if (!is_damage)
            failure = done.error();
    };
    VELL_TRY(change_file_tags(block_, tags, sections, maker_note, store));
    if (failure)
        return Failure{*failure};
    VELL_TRY(forget_what_stays(Window(file)));
    return append();
}

} // namespace

Result<std::unique_ptr<BlockPlace>> find_tiff_place(files::BufferedReader& file,
                                                    const WantedBlock& wanted) {
    const Window window(file);
    ExifBlock block = VELL_TRY(ExifBlock::read_file(window));
    if (VELL_TRY(is_foreign(window, block, wanted.file_name)))
        return Failure{ErrorCode::NotAJpeg};
    if (wanted.kind == BlockKind::Comment ||
        (wanted.kind == BlockKind::Xmp && !split_xmp_text(wanted.text).is_packet_segment()))
        return Failure{ErrorCode::NotSupported};
    VELL_TRY(check_values(window, block, DirectoryKind::Main));
    VELL_TRY(check_image_data(window, block));
    auto place = std::make_unique<TiffPlace>(window, std::move(block), wanted.kind);
    VELL_TRY(place->find(window));
    return std::unique_ptr<BlockPlace>(std::move(place));
}

} // namespace vell::metadata
