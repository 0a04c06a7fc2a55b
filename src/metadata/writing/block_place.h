// Where a kind of metadata stands in a file, and how it is placed anew: one class a format.
//
// The blocks themselves are made by the writers of Exif, IPTC and XMP, which know no files. A place
// knows nothing of their contents but what its format puts around them.
#pragma once

#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"
#include "src/formats/window.h"
#include "src/metadata/writing/exif_writer.h"
#include "src/metadata/writing/tagged_text.h"
#include "src/metadata/writing/text_store.h"
#include "src/system/file_access.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vell::metadata {

// In the order of the step's list of actions.
enum class BlockKind : std::uint8_t { Iptc, Exif, Xmp, ImageUrl, Comment };

using formats::longest_block;

// What a block has to be for its place.
struct BlockRules {
    std::size_t most_bytes = longest_block;
    bool in_resources = false;     // IPTC and URL: the block holds all image resources beside them
    bool is_utf8 = false;          // a comment: the format says how it is encoded
    std::size_t most_of_comment{}; // 0: as much as there is
};

class BlockPlace {
  public:
    BlockPlace() = default;
    BlockPlace(const BlockPlace&) = delete;
    BlockPlace& operator=(const BlockPlace&) = delete;
    virtual ~BlockPlace() = default;

    virtual BlockRules rules() const = 0;
    // The block's bytes as they stand; empty for none.
    virtual std::string_view content() const = 0;
    // Whether there is anything of the kind, an empty block too.
    virtual bool is_there() const = 0;

    // Plans a copy with that block; without one where it is empty. ResourceTooLarge for what the
    // format has no room for.
    virtual Result<void> put(std::string block) = 0;
    // Plans one with the tags of the sections (write_exif); false when that changes nothing. `file`
    // is the one that the place was found in.
    virtual Result<bool> put_tags(files::BufferedReader& file,
                                  std::span<const TaggedSection> sections, MakerNote maker_note,
                                  const TextStore& store);

    // Writes the planned copy; Busy when the file has changed since.
    virtual Result<void> copy(files::File& from, files::File& to) const = 0;
};

// What is to be placed; the text is that of the call.
struct WantedBlock {
    BlockKind kind;
    std::string_view text;
    std::u16string_view file_name; // tells raw photographs from other files
};

// The place in a file of any format. NotAJpeg for a format that is not written, NotSupported where
// the format has no place for the kind; otherwise what the format's own walk says.
Result<std::unique_ptr<BlockPlace>> find_block_place(files::BufferedReader& file,
                                                     const WantedBlock& wanted);

} // namespace vell::metadata
