// A name in an archive and its path below the target folder, which stays there.
#include "fuzz/input.h"
#include "src/archive/entry_path.h"
#include "src/base/utf8.h"

#include <algorithm>
#include <string>

namespace vell::entry_path_fuzz {
namespace {

std::u16string byte_by_byte(std::string_view bytes, params::TextEncoding) {
    std::u16string text;
    for (const char byte : bytes)
        text += static_cast<char16_t>(static_cast<unsigned char>(byte));
    return text;
}

// No name of the path is one that Windows would take for something else.
void check_names(std::u16string_view path) {
    FUZZ_CHECK(!path.empty());
    FUZZ_CHECK(path.find_first_of(std::u16string_view(u"/\":*<>?|\0", 9)) == path.npos);
    for (std::u16string_view rest = path;;) {
        const std::u16string_view name = rest.substr(0, rest.find(u'\\'));
        FUZZ_CHECK(!name.empty() && name.back() != u' ');
        FUZZ_CHECK(name.find_first_not_of(u". ") != name.npos);
        std::u16string stem(name.substr(0, name.find(u'.')));
        std::ranges::transform(stem, stem.begin(), [](char16_t c) {
            return static_cast<char16_t>(c >= u'a' && c <= u'z' ? c - 32 : c);
        });
        FUZZ_CHECK(stem != u"CON" && stem != u"NUL" && stem != u"AUX" && stem != u"PRN");
        FUZZ_CHECK(stem != u"COM1" && stem != u"LPT9" && stem != u"COM\u00B9");
        if (name.size() == rest.size())
            return;
        rest.remove_prefix(name.size() + 1);
    }
}

} // namespace

FUZZ_TARGET(entry_path) {
    archive::EntryInfo entry;
    entry.name = fuzz::as_text(data, size);
    for (const int variant : {0, 1, 2, 3}) {
        entry.utf8_name = variant % 2 == 1;
        entry.is_folder = variant > 1 || entry.name.ends_with('/');
        const std::u16string name =
            archive::decoded_name(entry, params::TextEncoding::AsciiDos, byte_by_byte);
        const auto path = archive::entry_path(entry, name);
        if (!path)
            continue;
        if (path->empty()) { // the target folder
            FUZZ_CHECK(entry.is_folder);
            continue;
        }
        check_names(*path);
        // A path names itself.
        const std::string written = utf8_from_utf16(*path);
        archive::EntryInfo itself;
        itself.name = written;
        const auto again = archive::entry_path(itself, *path);
        FUZZ_CHECK(again && *again == *path);
    }
    return 0;
}

} // namespace vell::entry_path_fuzz
