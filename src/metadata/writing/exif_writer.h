// Writes tagged text into a block of tags.
#pragma once

#include "src/base/result.h"
#include "src/metadata/metadata_request.h"
#include "src/metadata/metadata_text.h"
#include "src/metadata/writing/exif_block.h"
#include "src/metadata/writing/tagged_text.h"
#include "src/metadata/writing/text_store.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace vell::metadata {

enum class MakerNote : bool { Remove, Keep };

// The tags of a block as text, for what a text leaves as it is.
using TagsAsText = std::function<void(const ExifReadOptions&, TextEncoding, MetadataText&)>;

// The block with the sections of tags in place of the values that it had for them; an empty one for
// a block that would hold nothing. What the sections do not name stays: other tags, the thumbnail,
// and each value that reads as its section says, byte for byte. An empty section removes its tag.
//
// Texts are stored in the store's encoding. Without one of its own all that are new are UTF-8, of
// which ASCII is a part, so that one reading has them all; values of the type Utf8 always are.
//
// `existing` is the block to be changed, empty for a new one. BadParameter for a tag that is not
// known or a text that its type cannot hold, ResourceTooLarge for more than `most_bytes`, ShortRead
// and CorruptStructure for an existing block that cannot be read.
Result<std::string> write_exif(std::string_view existing, std::span<const TaggedSection> sections,
                               MakerNote maker_note, const TextStore& store,
                               std::size_t most_bytes);

// Writes the sections in the same way into the directories of a file that is a block of tags
// itself. There, tags also tell how the picture is stored: their sections are passed over, and no
// tag that is not known is changed, which is BadParameter.
Result<void> change_file_tags(ExifBlock& block, const TagsAsText& tags,
                              std::span<const TaggedSection> sections, MakerNote maker_note,
                              const TextStore& store);

} // namespace vell::metadata
