#include "src/metadata/reading/photoshop_resources.h"

#include "src/formats/jpeg/segments.h"
#include "src/metadata/faults.h"
#include "src/metadata/reading/iptc_text.h"

#include <algorithm>

namespace vell::metadata {
namespace {

using files::BufferedReader;

using formats::PatternSearch;
using photoshop::ImageResource;
using photoshop::ResourceId;

constexpr std::size_t bytes_from_match = PatternSearch::longest_look;

Result<ImageResource> resource_in(std::string_view block) {
    return coded(ImageResource::read(block), ErrorCode::ResourceTooLarge);
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
    static constexpr std::string_view identifier = formats::jpeg::JfifHeader::name;
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
        : pattern_(photoshop::start_of_resource(id)), search_(formats::Window(file), pattern_) {}
    ResourceSearch(const ResourceSearch&) = delete;
    ResourceSearch& operator=(const ResourceSearch&) = delete;

    // NothingFound when there is none.
    Result<Match> next() {
        const auto position = VELL_TRY(coded(search_.next(from_)));
        if (!position)
            return Failure{ErrorCode::NothingFound};
        return Match{*position, VELL_TRY(coded(search_.bytes(*position, bytes_from_match)))};
    }
    void go_on_behind(const Match& match, std::size_t size) { from_ = match.position + size; }

  private:
    std::string pattern_;
    PatternSearch search_;
    std::uint64_t from_ = 0;
};

// The first resource that holds anything.
Result<void> read_image_url(BufferedReader& file, TextEncoding source, MetadataText& text) {
    ResourceSearch search(file, ResourceId::ImageUrl);
    for (;;) {
        const Match match = VELL_TRY(search.next());
        const ImageResource resource = VELL_TRY(resource_in(match.block));
        if (!resource.data.empty()) {
            text.append(resource.data, source);
            return {};
        }
        search.go_on_behind(match, resource.data_start);
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
        const ImageResource resource = VELL_TRY(resource_in(match.block));
        if (!resource.data.empty())
            VELL_TRY(decode(resource.data));
        return resource.data_start + resource.data.size();
    }

    Result<std::size_t> decode(std::string_view block) {
        if (blocks_++ > 0)
            text_.append_styled("\r\r--- NEXT_IPTC_APP_RECORD ---", "bold blue");
        const std::size_t end = VELL_TRY(decode_iptc(block, request_.detect_utf8, request_.source,
                                                     text_, request_.exif.readable));
        // The search must move on.
        return std::max(end, photoshop::start_of_resource(ResourceId::Iptc).size());
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
