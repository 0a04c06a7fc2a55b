#include "src/metadata/values/file_values.h"

#include "src/base/utf8.h"
#include "src/metadata/containers/metadata_blocks.h"
#include "src/metadata/faults.h"
#include "src/metadata/images/image_description.h"
#include "src/metadata/values/iptc_values.h"
#include "src/metadata/values/profile_values.h"
#include "src/metadata/values/tag_set.h"
#include "src/metadata/values/xmp_model.h"

#include <string>
#include <utility>

namespace vell::metadata {
namespace {

class FileValues {
  public:
    FileValues(const ValueKinds& wanted, TextEncoding otherwise, const TextDecoder& decoder)
        : wanted_(wanted), otherwise_(otherwise), decoder_(decoder) {}

    Result<Members> read(files::BufferedReader& file) {
        MetadataBlocks blocks = VELL_TRY(find_blocks(formats::Window(file), kinds()));
        VELL_TRY(add_tags(blocks));
        if (blocks.iptc)
            add("IPTC", iptc_members(*blocks.iptc, otherwise_, decoder_));
        if (blocks.xmp)
            add("XMP", xmp_members(model_of(*blocks.xmp)));
        if (blocks.icc)
            add("ICC", icc_members(*blocks.icc, otherwise_, decoder_));
        if (wanted_.image)
            VELL_TRY(add_image(file));
        add_comments(blocks);
        add_texts(blocks);
        if (blocks.image_url)
            members_.add("ImageURL", in_utf8(*blocks.image_url));
        return std::move(members_);
    }

  private:
    BlockKinds kinds() const {
        BlockKinds kinds;
        kinds.tags = wanted_.exif || wanted_.gps;
        kinds.iptc = wanted_.iptc;
        kinds.xmp = wanted_.xmp;
        kinds.icc = wanted_.icc;
        kinds.image_url = wanted_.image_url;
        kinds.comments = wanted_.comment;
        kinds.texts = wanted_.texts;
        return kinds;
    }

    std::string in_utf8(std::string_view bytes) const {
        const FoundText found = recognised(bytes, otherwise_);
        return decoder_(found.bytes, found.encoding);
    }

    // The same of bytes that are not needed any more.
    std::string taken_in_utf8(std::string& bytes) const {
        std::string taken = std::move(bytes);
        return is_valid_utf8(taken) ? std::move(taken) : in_utf8(taken);
    }

    // Without the packet, which is not needed behind it.
    XmpModel model_of(std::string& packet) const { return XmpModel::read(taken_in_utf8(packet)); }

    void add(const char* name, Members members) {
        if (!members.empty())
            members_.add(name, std::move(members));
    }

    Result<void> add_tags(const MetadataBlocks& blocks) {
        TagSet tags(otherwise_);
        for (const TagBlock& block : blocks.tags)
            VELL_TRY(tags.add(block.place, block.root));
        if (wanted_.exif)
            add("Exif", exif_members(tags, decoder_));
        if (wanted_.gps)
            add("GPS", gps_members(tags, decoder_));
        return {};
    }

    Result<void> add_image(files::BufferedReader& file) {
        const Result<ImageHeader> header = read_image_header(file);
        if (header)
            add("Image", image_members(*header, file.size()));
        else if (!is_of_contents(header.error()))
            return Failure{header.error()};
        return {};
    }

    void add_comments(MetadataBlocks& blocks) {
        Values comments;
        for (std::string& comment : blocks.comments) {
            comment.resize(comment.find_last_not_of('\0') + 1);
            comments.emplace_back(taken_in_utf8(comment));
        }
        if (comments.size() == 1)
            members_.add("Comment", std::move(comments.front()));
        else if (!comments.empty())
            members_.add("Comment", std::move(comments));
    }

    // A keyword that stands several times is an array.
    void add_texts(MetadataBlocks& blocks) {
        Members texts;
        for (TextEntry& entry : blocks.texts) {
            Value* const there = texts.find_same(entry.keyword);
            if (there == nullptr) {
                texts.add(std::move(entry.keyword), std::move(entry.text));
                continue;
            }
            if (there->array() == nullptr) {
                Values values;
                values.push_back(std::move(*there));
                *there = std::move(values);
            }
            there->array()->emplace_back(std::move(entry.text));
        }
        add("Text", std::move(texts));
    }

    const ValueKinds& wanted_;
    TextEncoding otherwise_;
    const TextDecoder& decoder_;
    Members members_;
};

} // namespace

Result<Members> read_values(files::BufferedReader& file, const ValueKinds& wanted,
                            TextEncoding otherwise, const TextDecoder& decoder) {
    return FileValues(wanted, otherwise, decoder).read(file);
}

} // namespace vell::metadata
