// Items of a file: their values within a limit, from wherever they are put together, and images.
#include "fuzz/input.h"
#include "src/formats/isobmff/items.h"

#include <vector>

namespace vell::file_items_fuzz {

FUZZ_TARGET(file_items) {
    using namespace vell::formats;
    constexpr std::uint64_t limit = 1000;
    constexpr std::size_t most_asked = 64; // of items, which need no bytes of their own
    const std::vector<char> file(data, data + size);
    BytesInMemory source({file.data(), file.size()});
    const auto items = isobmff::Items::read(Window(source));
    if (!items) {
        FUZZ_CHECK(items.error().damage != Damage::Unreadable);
        return 0;
    }
    FUZZ_CHECK(items->all().size() <= size);
    const auto ask = [&](isobmff::ItemId id) {
        const auto value = items->value_of(id, limit);
        FUZZ_CHECK(value ? value->size() <= limit : value.error().damage != Damage::Unreadable);
        const auto image = items->image(id);
        if (image)
            FUZZ_CHECK(image->width > 0 && image->height > 0 && image->rotation % 90 == 0);
    };
    std::size_t asked = 0;
    for (const auto& [id, item] : items->all())
        if (++asked <= most_asked)
            ask(id);
    ask(items->primary());
    return 0;
}

} // namespace vell::file_items_fuzz
