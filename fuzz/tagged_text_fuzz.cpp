// Tagged text: what is found in any text, written again, is found again.
#include "fuzz/input.h"
#include "src/metadata/writing/tagged_text.h"

#include <string>

namespace vell::tagged_text_fuzz {

FUZZ_TARGET(tagged_text) {
    const std::string_view text = fuzz::as_text(data, size);
    const auto sections = metadata::parse_tagged_text(text);
    if (!sections)
        return 0;
    std::string again;
    for (const metadata::TaggedSection& section : *sections) {
        FUZZ_CHECK(section.value.empty() ||
                   (section.value.data() > text.data() &&
                    section.value.data() + section.value.size() < text.data() + text.size()));
        constexpr const char* words[] = {"##EXIF ", "##GPS ", "##INTEROP ", "##IPTC ", "##JCOM"};
        const bool is_comment = section.kind == metadata::SectionKind::Comment;
        const std::string number = is_comment ? "" : std::to_string(section.number);
        again += "\r" + std::string(words[static_cast<std::size_t>(section.kind)]) + number + "\r" +
                 std::string(section.value) + "\r##END " + number;
    }
    const auto found = metadata::parse_tagged_text(again);
    // A number may have been written with zeros before it: its end was another one then.
    if (text.find(" 0") != std::string_view::npos)
        return 0;
    FUZZ_CHECK(found && found->size() == sections->size());
    for (std::size_t i = 0; i < found->size(); ++i) {
        FUZZ_CHECK((*found)[i].kind == (*sections)[i].kind);
        FUZZ_CHECK((*found)[i].number == (*sections)[i].number);
        FUZZ_CHECK((*found)[i].value == (*sections)[i].value);
    }
    return 0;
}

} // namespace vell::tagged_text_fuzz
