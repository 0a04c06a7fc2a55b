// The part of the reader that gives out the data of entries.
#include "src/archive/zip_reader.h"

#include "src/base/crc32.h"
#include "src/system/system.h"

#include <algorithm>
#include <span>

namespace vell::archive {
namespace {

using formats::zip::EntryFlag;
using formats::zip::see_zip64;

constexpr Failure extraction_failed{ErrorCode::ExtractionFailed};
constexpr std::size_t inflated_piece_size = 65'536;
constexpr std::size_t deflate64_piece_size = 32'768;

bool has_data(const EntryInfo& entry) {
    return !entry.is_folder && entry.uncompressed_size != 0;
}

bool is_readable(const EntryInfo& entry) {
    return !has(entry.flags, EntryFlag::Encrypted) && !has(entry.flags, EntryFlag::PatchedData);
}

// The most that a byte of compressed data can become: by the longest match of each method and the
// fewest bits that code one.
std::uint64_t largest_ratio(std::uint16_t method) {
    switch (static_cast<Method>(method)) {
    case Method::Stored:
        return 1;
    case Method::Deflated:
        return 258 * 8 / 2;
    case Method::Deflate64:
        return 65'538 * 8 / 18 + 1;
    default:
        return 0;
    }
}

// Counts and checks what a decoder gives, and hands it on.
class CheckedSink {
  public:
    CheckedSink(const EntryInfo& entry, const EntrySink& sink) : entry_(entry), sink_(sink) {}

    Result<void> take(std::string_view data) {
        if (data.size() > entry_.uncompressed_size - taken_)
            return extraction_failed;
        VELL_TRY(sink_(taken_, data));
        crc_ = crc32_of(data, crc_);
        taken_ += data.size();
        return {};
    }

    bool is_complete() const { return taken_ == entry_.uncompressed_size && crc_ == entry_.crc32; }

  private:
    const EntryInfo& entry_;
    const EntrySink& sink_;
    std::uint64_t taken_ = 0;
    std::uint32_t crc_ = 0;
};

} // namespace

// Null for an unsupported method.
Decoder* ZipReader::decoder_for(std::uint16_t method) {
    std::unique_ptr<Decoder>* decoder = nullptr;
    switch (static_cast<Method>(method)) {
    case Method::Stored:
        decoder = &stored_;
        break;
    case Method::Deflated:
        decoder = &deflated_;
        break;
    case Method::Deflate64:
        decoder = &deflate64_;
        break;
    default:
        return nullptr;
    }
    if (!*decoder)
        *decoder = make_decoder(static_cast<Method>(method));
    return decoder->get();
}

// The place of the data behind the local header, checked together with its size.
Result<std::uint64_t> ZipReader::find_data(const EntryInfo& entry) {
    std::array<char, LocalFileHeader::size> bytes;
    VELL_TRY(read_at(entry.local_header_offset, bytes));
    const auto header = formats::read_record<LocalFileHeader>({bytes.data(), bytes.size()});
    if (!header)
        return extraction_failed;
    const std::uint64_t start = std::uint64_t{entry.local_header_offset} + LocalFileHeader::size +
                                header->file_name_length + header->extra_field_length;
    if (start > archive_size_ || entry.compressed_size > archive_size_ - start)
        return extraction_failed;
    return start;
}

// As it was found when overlaps were looked for; the header is not read again then.
Result<std::uint64_t> ZipReader::data_of(std::uint32_t index, const EntryInfo& entry) {
    if (index < data_starts_.size() && data_starts_[index] != 0)
        return data_starts_[index];
    return find_data(entry);
}

Result<void> ZipReader::check_overlaps() {
    struct Place {
        std::uint32_t offset;
        std::uint32_t index;
    };
    std::vector<Place> places;
    for (std::uint32_t i = 0; i < entry_count(); ++i) {
        const EntryInfo entry = *this->entry(i);
        // Sizes that stand in a Zip64 block alone are not known, and so there is no extraction.
        const bool is_unknown =
            entry.compressed_size == see_zip64 && entry.uncompressed_size == see_zip64;
        if (has_data(entry) && !is_unknown)
            places.push_back({entry.local_header_offset, i});
    }
    std::ranges::sort(places, {}, &Place::offset);
    data_starts_.assign(entry_count(), 0);
    std::uint64_t free_from = 0;
    for (const Place& place : places) {
        const EntryInfo entry = *this->entry(place.index);
        const auto start = find_data(entry);
        if (!start)
            continue;
        if (place.offset < free_from)
            return Failure{ErrorCode::CorruptStructure};
        free_from = *start + entry.compressed_size;
        data_starts_[place.index] = *start;
    }
    return {};
}

Result<void> ZipReader::check_limits(const Limits& limits) const {
    std::uint64_t bytes = 0;
    for (std::uint32_t i = 0; i < entry_count(); ++i)
        bytes += entry(i)->uncompressed_size;
    if (entry_count() > limits.archive_entries || bytes > limits.archive_bytes)
        return Failure{ErrorCode::RefusedByPolicy};
    return {};
}

Result<void> ZipReader::extract(std::uint32_t index, const EntrySink& sink) {
    const auto entry = this->entry(index);
    if (!entry)
        return extraction_failed;
    if (!has_data(*entry))
        return {};
    if (!is_readable(*entry))
        return extraction_failed;
    Decoder* const decoder = decoder_for(entry->method);
    if (!decoder)
        return extraction_failed;
    const auto start = data_of(index, *entry);
    if (!start)
        return extraction_failed;

    const bool is_deflate64 = static_cast<Method>(entry->method) == Method::Deflate64;
    piece_.resize(is_deflate64 ? deflate64_piece_size : inflated_piece_size);
    std::uint64_t left = entry->compressed_size;
    const auto next_piece = [&]() -> Result<std::string_view> {
        const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(left, piece_.size()));
        const std::uint64_t position = *start + (entry->compressed_size - left);
        if (size > 0)
            VELL_TRY(read_at(position, std::span(piece_.data(), size)));
        left -= size;
        return std::string_view(piece_.data(), size);
    };
    CheckedSink checked(*entry, sink);
    const auto take = [&](std::string_view data) {
        return checked.take(data);
    };
    if (!decoder->decode(next_piece, take) || !checked.is_complete())
        return extraction_failed;
    return {};
}

bool ZipReader::may_be_whole(std::uint32_t index) {
    const auto entry = this->entry(index);
    if (!entry || !has_data(*entry))
        return entry.has_value();
    return is_readable(*entry) && data_of(index, *entry) &&
           entry->uncompressed_size <= largest_ratio(entry->method) * entry->compressed_size;
}

Result<void> ZipReader::extract_to_file(std::uint32_t index, files::HeldFile& file) {
    const auto entry = this->entry(index);
    if (!entry)
        return Failure{ErrorCode::CannotOpen};
    VELL_TRY(
        extract(index, [&](std::uint64_t, std::string_view data) { return file.write(data); }));
    // A time that cannot be set is no reason to call the extraction failed.
    const params::CalendarTime time = calendar_time(entry->modified);
    static_cast<void>(file.set_times({.accessed = time, .modified = time}));
    if (!file.close())
        return Failure{ErrorCode::CannotClose};
    return {};
}

ErrorCode target_error(ErrorCode opening) {
    switch (opening) {
    case ErrorCode::NotFound:
    case ErrorCode::FolderNotFound:
        return ErrorCode::TargetNotFound;
    case ErrorCode::Busy:
        return ErrorCode::TargetDenied;
    case ErrorCode::BadName:
    case ErrorCode::BadParameter:
        return ErrorCode::BadArgument;
    default:
        return ErrorCode::CannotOpen;
    }
}

} // namespace vell::archive
