// All values of a file: one member for each kind of metadata.
#pragma once

#include "src/files/contents/buffered_reader.h"
#include "src/metadata/values/character_code.h"
#include "src/metadata/values/value.h"

namespace vell::metadata {

struct ValueKinds {
    bool exif = false;
    bool gps = false;
    bool iptc = false;
    bool xmp = false;
    bool icc = false;
    bool image = false;
    bool comment = false;
    bool texts = false;
    bool image_url = false;

    bool any() const {
        return exif || gps || iptc || xmp || icc || image || comment || texts || image_url;
    }
    static constexpr ValueKinds all() {
        return {true, true, true, true, true, true, true, true, true};
    }
};

// The members "Exif", "GPS", "IPTC", "XMP", "ICC", "Image", "Comment", "Text" and "ImageURL", of
// those that are wanted the ones that are there. Damage of one kind loses no other. A failure is
// one of the file.
Result<Members> read_values(files::BufferedReader& file, const ValueKinds& wanted,
                            TextEncoding otherwise, const TextDecoder& decoder);

} // namespace vell::metadata
