#include "src/metadata/photoshop_resources.h"

#include "src/metadata/file_search.h"
#include "src/metadata/iptc.h"

#include <algorithm>

namespace vell::metadata {
namespace {

using files::BufferedReader;

constexpr std::size_t signature_and_id = 6;
constexpr std::size_t bytes_from_match = FileSearch::longest_look;
constexpr std::size_t nameless_header = signature_and_id + 2 + 4; // the name's field, the size
static_assert(nameless_header + longest_readable_data == bytes_from_match);

std::string signature_of(ResourceId id) {
    std::string bytes = "8BIM";
    append_integer<std::uint16_t>(bytes, static_cast<std::uint16_t>(id), ByteOrder::Big);
    return bytes;
}

// The data behind signature, name and size.
struct ResourceData {
    std::size_t offset;
    std::size_t size;
};
Result<ResourceData> data_of(std::string_view block) {
    const auto name_length = load<std::uint8_t>(block, signature_and_id, ByteOrder::Big);
    if (!name_length)
        return Failure{ErrorCode::ResourceTooLarge};
    const std::size_t name_field = (std::size_t{1} + *name_length + 1) & ~std::size_t{1};
    const std::size_t at = signature_and_id + name_field;
    const auto size = load<std::uint32_t>(block, at, ByteOrder::Big);
    const std::size_t offset = at + sizeof(std::uint32_t);
    if (!size || *size > block.size() - offset)
        return Failure{ErrorCode::ResourceTooLarge};
    return ResourceData{offset, *size};
}

// Whether a JFIF image begins in one of the blocks of a file, which are asked for in their order.
// Blocks that overlap are looked through once.
class JfifFinder {
  public:
    bool occurs_in(std::string_view block, std::uint64_t position) {
        const std::uint64_t end = position + block.size();
        if (!found_ || *found_ < position) {
            found_.reset();
            const std::uint64_t from = std::max(position, searched_);
            const std::size_t skipped = static_cast<std::size_t>(std::min(from, end) - position);
            const std::size_t at = block.find(identifier, skipped);
            if (at != std::string_view::npos)
                found_ = position + at;
            else if (block.size() >= identifier.size())
                searched_ = std::max(searched_, end - identifier.size() + 1);
        }
        return found_ && *found_ + identifier.size() <= end;
    }

  private:
    static constexpr std::string_view identifier{"JFIF\0", 5};
    std::optional<std::uint64_t> found_;
    std::uint64_t searched_ = 0; // nothing begins before, but for what was found
};

// One resource of the file with its place.
struct Match {
    std::uint64_t position;
    std::string_view block; // from its signature on
};

class ResourceSearch {
  public:
    ResourceSearch(BufferedReader& file, ResourceId id)
        : pattern_(signature_of(id)), search_(file, pattern_) {}
    ResourceSearch(const ResourceSearch&) = delete;
    ResourceSearch& operator=(const ResourceSearch&) = delete;

    // NothingFound when there is none.
    Result<Match> next() {
        const auto position = VELL_TRY(search_.next(from_));
        if (!position)
            return Failure{ErrorCode::NothingFound};
        return Match{*position, VELL_TRY(search_.bytes(*position, bytes_from_match))};
    }
    void go_on_behind(const Match& match, std::size_t size) { from_ = match.position + size; }

  private:
    std::string pattern_;
    FileSearch search_;
    std::uint64_t from_ = 0;
};

// The first resource that holds anything.
Result<void> read_image_url(BufferedReader& file, TextEncoding source, MetadataText& text) {
    ResourceSearch search(file, ResourceId::ImageUrl);
    for (;;) {
        const Match match = VELL_TRY(search.next());
        const ResourceData data = VELL_TRY(data_of(match.block));
        if (data.size > 0) {
            text.append(match.block.substr(data.offset, data.size), source);
            return {};
        }
        search.go_on_behind(match, data.offset);
    }
}

class IptcSearch {
  public:
    IptcSearch(BufferedReader& file, const MetadataRequest& request, MetadataText& text)
        : search_(file, ResourceId::Iptc), request_(request), text_(text) {}

    Result<void> run() {
        for (;;) {
            const Result<Match> match = search_.next();
            if (!match && match.error() == ErrorCode::NothingFound && blocks_ > 0)
                break;
            VELL_TRY(match);
            search_.go_on_behind(*match, VELL_TRY(read(*match)));
            if (blocks_ > 0 && !request_.all_application_records)
                return {};
        }
        if (blocks_ > 1)
            text_.append_styled("\r\rWARNING: MULTIPLE_IPTC_APP_RECORDS_FOUND\r", "bold red");
        return {};
    }

  private:
    // Bytes that the resource takes.
    Result<std::size_t> read(const Match& match) {
        // Where an image follows, the header is not relied on: the datasets are found by their
        // markers.
        if (jfif_.occurs_in(match.block, match.position))
            return decode(match.block);
        const ResourceData data = VELL_TRY(data_of(match.block));
        if (data.size > 0)
            VELL_TRY(decode(match.block.substr(data.offset, data.size)));
        return data.offset + data.size;
    }

    Result<std::size_t> decode(std::string_view block) {
        if (blocks_++ > 0)
            text_.append_styled("\r\r--- NEXT_IPTC_APP_RECORD ---", "bold blue");
        const std::size_t end =
            VELL_TRY(decode_iptc(block, request_.detect_utf8, request_.source, text_));
        return std::max(end, signature_and_id); // the search must move on
    }

    ResourceSearch search_;
    const MetadataRequest& request_;
    MetadataText& text_;
    JfifFinder jfif_;
    int blocks_ = 0;
};

} // namespace

Result<void> read_photoshop_resources(BufferedReader& file, const MetadataRequest& request,
                                      MetadataText& text) {
    if (request.exif.want_iptc)
        return IptcSearch(file, request, text).run();
    return read_image_url(file, request.source, text);
}

} // namespace vell::metadata
