// Pictures inside other files, and how they are to be turned: whatever the bytes are, each one that
// is found lies in the file or has bytes of its own, and one of them is chosen.
#include "fuzz/input.h"
#include "src/pictures/inside/previews.h"

#include <algorithm>
#include <set>
#include <vector>

namespace vell::embedded_pictures_fuzz {

FUZZ_TARGET(embedded_pictures) {
    using namespace vell::pictures;
    // Where it ends so does the block: a read beyond it is a finding.
    const std::vector<char> file(data, data + size);
    BytesInMemory source({file.data(), file.size()});
    const auto orientation = orientation_of(source);
    FUZZ_CHECK(orientation && *orientation >= Orientation::TopLeft &&
               *orientation <= Orientation::LeftBottom);

    const auto pictures = find_pictures(source);
    FUZZ_CHECK(pictures); // memory does not fail
    FUZZ_CHECK(pictures->size() <= most_pictures);
    std::set<std::uint64_t> places;
    std::uint64_t copied = 0;
    for (const EmbeddedPicture& each : *pictures) {
        FUZZ_CHECK(each.width > 0 && each.height > 0 && each.size > 0);
        FUZZ_CHECK(each.orientation >= Orientation::TopLeft &&
                   each.orientation <= Orientation::LeftBottom);
        copied += each.bytes.size();
        if (each.bytes.empty())
            FUZZ_CHECK(each.size <= size && each.offset <= size - each.size &&
                       places.insert(each.offset).second);
        else
            FUZZ_CHECK(each.offset == 0 && each.size == each.bytes.size());
    }
    FUZZ_CHECK(copied <= longest_copy);
    for (const std::uint32_t wanted : {0U, 80U, 1024U, ~0U}) {
        const EmbeddedPicture* const chosen = choose(*pictures, wanted);
        FUZZ_CHECK((chosen == nullptr) == pictures->empty());
        FUZZ_CHECK(chosen == nullptr ||
                   (chosen >= pictures->data() && chosen < pictures->data() + pictures->size()));
    }
    return 0;
}

} // namespace vell::embedded_pictures_fuzz
