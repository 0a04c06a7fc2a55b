// What a drag hands over: lists of paths, and descriptions of items whose names become files.
#include "fuzz/input.h"
#include "src/base/ascii.h"
#include "src/dragdrop/dropped_data.h"
#include "src/files/tree/item_names.h"

#include <algorithm>
#include <set>
#include <string>

namespace vell::dropped_data_fuzz {
namespace {

std::u16string byte_by_byte(std::string_view bytes) {
    std::u16string text;
    for (const char byte : bytes)
        text += static_cast<char16_t>(static_cast<unsigned char>(byte));
    return text;
}

} // namespace

FUZZ_TARGET(dropped_data) {
    const std::string_view bytes = fuzz::as_text(data, size);
    for (const std::u16string& path : dragdrop::dropped_paths(bytes, byte_by_byte))
        FUZZ_CHECK(!path.empty() && path.find(u'\0') == path.npos);

    dragdrop::FreshNames names;
    std::set<std::u16string> given;
    for (const dragdrop::ContentsItem& item : dragdrop::described_items(bytes)) {
        // The same name again is another one.
        for (int i = 0; i < 2; ++i) {
            std::u16string name = names.name_for(item.name);
            FUZZ_CHECK(!name.empty() && name.size() < 200);
            FUZZ_CHECK(name.back() != u'.' && name.back() != u' ' && name.front() != u' ');
            FUZZ_CHECK(name.find_first_of(u"\\/:*?\"<>|\r\n\t") == name.npos);
            FUZZ_CHECK(!files::is_device_name(name));
            std::transform(name.begin(), name.end(), name.begin(), fold_ascii<char16_t>);
            FUZZ_CHECK(given.insert(name).second);
        }
    }
    return 0;
}

} // namespace vell::dropped_data_fuzz
