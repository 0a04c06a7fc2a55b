// What the finders of the containers put their finds in.
#pragma once

#include "src/metadata/containers/metadata_blocks.h"

#include <string>
#include <string_view>

namespace vell::metadata {

class BlockCollector {
  public:
    BlockCollector(const BlockKinds& wanted, MetadataBlocks& blocks)
        : wanted_(wanted), blocks_(blocks) {}

    const BlockKinds& wanted() const { return wanted_; }
    // What is wanted and not found yet; of comments and texts there may be any number.
    bool wants_tags() const { return wanted_.tags && blocks_.tags.empty(); }
    bool wants_iptc() const { return wanted_.iptc && !blocks_.iptc; }
    bool wants_xmp() const { return wanted_.xmp && !blocks_.xmp; }
    bool wants_icc() const { return wanted_.icc && !blocks_.icc; }
    bool wants_image_url() const { return wanted_.image_url && !blocks_.image_url; }
    bool wants_resources() const { return wants_iptc() || wants_image_url(); }
    bool wants_comments() const { return wanted_.comments; }
    bool wants_texts() const { return wanted_.texts; }
    bool wants_anything() const {
        return wants_tags() || wants_resources() || wants_xmp() || wants_icc() ||
               wants_comments() || wants_texts();
    }

    // Bytes that there is room for.
    std::uint64_t room() const { return room_; }
    // All of a part. TooLarge where there is no room for it, CutOff where it is not all there.
    formats::Read<std::string> read(formats::Window part);
    // Bytes that came from elsewhere, such as what was compressed. TooLarge without room for them.
    formats::Read<std::string> take(std::string bytes);
    // Expands what was compressed, within the room that is left. Corrupt for what does not expand;
    // a file may hold only so much of that, since each piece takes time.
    formats::Read<std::string> expand(std::string_view compressed);

    // A window at bytes that stay as long as what was found.
    formats::Window keep(std::string bytes);

    // Some writers put before the tags what JPEG files have there; it is passed over. Absent for
    // what does not begin as tags do.
    formats::Read<void> add_tags(formats::Window block, TagRoot root = TagRoot::Image);
    // HEIF and JPEG XL say before all that how far behind there the header is.
    formats::Read<void> add_tags_behind_offset(formats::Window block);
    // Each takes the first one that is not empty.
    void set_iptc(std::string datasets);
    void set_xmp(std::string packet); // without zeros at its end
    void set_icc(std::string profile);
    void set_image_url(std::string url);
    void add_comment(std::string comment) { blocks_.comments.push_back(std::move(comment)); }
    void add_text(TextEntry entry) { blocks_.texts.push_back(std::move(entry)); }

  private:
    const BlockKinds& wanted_;
    MetadataBlocks& blocks_;
    std::uint64_t room_ = longest_blocks;
    std::uint64_t room_for_failures_ = 4 * longest_blocks; // of expanded bytes
};

// One for each container. What they find damaged they leave out, or say so where nothing of what
// follows can be found; faults of the source are passed on.
formats::Read<void> find_in_jpeg(const formats::Window& file, BlockCollector& found);
formats::Read<void> find_in_tiff(const formats::Window& file, BlockCollector& found);
formats::Read<void> find_in_png(const formats::Window& file, BlockCollector& found);
formats::Read<void> find_in_gif(const formats::Window& file, BlockCollector& found);
formats::Read<void> find_in_webp(const formats::Window& file, BlockCollector& found);
formats::Read<void> find_in_photoshop(const formats::Window& file, BlockCollector& found);
// HEIF, Canon's raw photographs, movies.
formats::Read<void> find_in_iso_media(const formats::Window& file, BlockCollector& found);
formats::Read<void> find_in_jpeg_xl(const formats::Window& file, BlockCollector& found);
// Raw photographs.
formats::Read<void> find_in_raf(const formats::Window& file, BlockCollector& found);
formats::Read<void> find_in_ciff(const formats::Window& file, BlockCollector& found);
formats::Read<void> find_in_mrw(const formats::Window& file, BlockCollector& found);
formats::Read<void> find_in_x3f(const formats::Window& file, BlockCollector& found);

// Datasets and the URL, in image resources, which several containers have.
formats::Read<void> find_in_resources(const formats::Window& resources, BlockCollector& found);

} // namespace vell::metadata
