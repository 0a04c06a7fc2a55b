// The blocks of metadata that a file holds, wherever its format keeps them.
//
// Readers of tags, datasets, packets and profiles need not know the containers: they take what is
// found here.
#pragma once

#include "src/base/byte_source.h"
#include "src/base/result.h"
#include "src/formats/recognition.h"
#include "src/formats/window.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vell::metadata {

// Where a block of tags begins: CR3 keeps the directories of a photograph apart.
enum class TagRoot : std::uint8_t { Image, Exif, Gps };

// Begins with a TIFF header, whose first directory is of that kind.
struct TagBlock {
    formats::Window place;
    TagRoot root = TagRoot::Image;
};

// Of PNG, in UTF-8.
struct TextEntry {
    std::string keyword;
    std::string text;
};

// What is looked for; nothing else is read.
struct BlockKinds {
    bool tags = false;
    bool iptc = false;
    bool xmp = false;
    bool icc = false;
    bool image_url = false;
    bool comments = false;
    bool texts = false;
};

// Windows look at the file, or at bytes that are kept here.
struct MetadataBlocks {
    formats::Format format = formats::Format::Unknown;
    std::vector<TagBlock> tags;           // the one that says most of the photograph first
    std::optional<std::string> iptc;      // the datasets
    std::optional<std::string> xmp;       // one packet, UTF-8; a JPEG's extension is joined to it
    std::optional<std::string> icc;       // a whole profile
    std::optional<std::string> image_url; // as it stands
    std::vector<std::string> comments;    // as they stand
    std::vector<TextEntry> texts;

    std::vector<std::unique_ptr<ByteSource>> kept;
};

// All that one file's blocks may have in memory together.
inline constexpr std::uint64_t longest_blocks = formats::longest_block;

// Of each kind the first that is sound, of comments and texts all. Damage of one kind loses that
// kind only, and a file of no format that is known has nothing; a failure is one of the source.
Result<MetadataBlocks> find_blocks(formats::Window file, const BlockKinds& wanted);

} // namespace vell::metadata
