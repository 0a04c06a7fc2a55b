#include "src/metadata/writing/multi_picture.h"

#include "src/formats/jpeg/multi_picture.h"

#include <limits>

namespace vell::metadata {
namespace {

Result<void> add(std::uint32_t& number, std::int64_t difference) {
    const std::int64_t sum = std::int64_t{number} + difference;
    if (sum < 0 || sum > std::int64_t{std::numeric_limits<std::uint32_t>::max()})
        return Failure{ErrorCode::ResourceTooLarge};
    number = static_cast<std::uint32_t>(sum);
    return {};
}

} // namespace

Result<std::string> shifted_index(std::string_view index, const PictureShift& shift) {
    std::string bytes(index);
    auto list = formats::jpeg::PictureList::read(index);
    if (!list)
        return bytes;
    bool is_first = true;
    for (formats::jpeg::Picture& picture : list->pictures) {
        // The first picture is the one that the index stands in, and has no offset.
        if (picture.offset == 0) {
            if (is_first && picture.picture_size >= shift.scan)
                VELL_TRY(add(picture.picture_size, shift.first_size));
        } else if (shift.header + picture.offset >= shift.scan) {
            VELL_TRY(add(picture.offset, shift.offsets));
        }
        is_first = false;
    }
    list->write(bytes);
    return bytes;
}

} // namespace vell::metadata
