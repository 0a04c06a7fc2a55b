#include "src/archive/zip_functions.h"

#include "src/system/system.h"

namespace vell::archive {
namespace {

using files::ItemKind;
using params::Call;
using params::SwitchSet;

constexpr char16_t line_end = u'\r';

bool is_ds_store(std::u16string_view name) {
    constexpr std::u16string_view ds_store = u".DS_Store";
    return name == ds_store || name.ends_with(u"/.DS_Store");
}

// The lines that the switches keep. A name may hold line ends itself; each line counts then.
std::u16string kept_lines(std::u16string_view text, bool skip_mac_items, bool skip_ds_store) {
    std::u16string kept;
    while (!text.empty()) {
        const std::u16string_view line = text.substr(0, text.find(line_end));
        text.remove_prefix(line.size() + 1); // every line has its end
        if ((skip_mac_items && line.starts_with(u"__MACOSX/")) ||
            (skip_ds_store && is_ds_store(line)))
            continue;
        kept.append(line) += line_end;
    }
    return kept;
}

} // namespace

Result<void> get_zip_info(Call& call, System& system) {
    const NameDecoder decode = [&call](std::string_view bytes, params::TextEncoding encoding) {
        return call.decode(bytes, encoding);
    };
    const SwitchSet switches = call.switches();
    const NativePath path = VELL_TRY(call.path(1));
    const ItemKind kind = system.files().kind_of(path);
    if (kind != ItemKind::File)
        return Failure{kind == ItemKind::None ? ErrorCode::NotFound : ErrorCode::IsAFolder};
    const ZipReader reader = VELL_TRY(open_archive(system, path));
    const auto encoding = encoding_of(switches, params::TextEncoding::AsciiDos);
    std::u16string text;
    for (std::uint32_t i = 0; i < reader.entry_count(); ++i)
        if (const auto entry = reader.entry(i))
            text.append(decoded_name(*entry, encoding, decode)) += line_end;
    const bool skip_mac_items = switches.has("-SkipHiddenMacOSXItems");
    const bool skip_ds_store = switches.has("-SkipDS_Store");
    if (skip_mac_items || skip_ds_store)
        text = kept_lines(text, skip_mac_items, skip_ds_store);
    call.set_text(text);
    return {};
}

} // namespace vell::archive
