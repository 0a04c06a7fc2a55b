#include "src/archive/zip_functions.h"

#include "src/base/json_writer.h"
#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/params/line_endings.h"
#include "src/system/system.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vell::archive {
namespace {

using files::ItemKind;
using params::Call;
using params::SwitchSet;

bool is_ds_store(std::u16string_view name) {
    constexpr std::u16string_view ds_store = u".DS_Store";
    return name == ds_store || name.ends_with(u"/.DS_Store");
}

bool is_mac_item(std::u16string_view name) {
    return name.starts_with(u"__MACOSX/");
}

// The lines that the switches keep. A name may hold line ends itself; each line counts then.
std::u16string kept_lines(std::u16string_view text, bool skip_mac_items, bool skip_ds_store) {
    std::u16string kept;
    while (!text.empty()) {
        const std::u16string_view line = text.substr(0, text.find(params::line_end));
        text.remove_prefix(line.size() + 1); // every line has its end
        if ((skip_mac_items && is_mac_item(line)) || (skip_ds_store && is_ds_store(line)))
            continue;
        kept.append(line) += params::line_end;
    }
    return kept;
}

// The methods that have a name in practice (APPNOTE, section 4.4.5).
std::string method_name(std::uint16_t method) {
    constexpr std::pair<std::uint16_t, std::string_view> names[] = {
        {0, "Stored"}, {8, "Deflate"}, {9, "Deflate64"}, {12, "BZip2"}, {14, "LZMA"},
        {93, "Zstd"},  {95, "XZ"},     {97, "WavPack"},  {98, "PPMd"},  {99, "AES"},
    };
    const auto* const row =
        std::ranges::find(names, method, &std::pair<std::uint16_t, std::string_view>::first);
    return row == std::end(names) ? to_text(std::uint64_t{method}) : std::string(row->second);
}

std::string hexadecimal_number(std::uint32_t number) {
    std::string bytes;
    append_integer<std::uint32_t>(bytes, number, ByteOrder::Big);
    return hexadecimal(bytes);
}

// Nothing for the number that says: it stands in a Zip64 field (APPNOTE, section 4.5.3), as that of
// an entry which is not expanded.
void append_size(std::string_view name, std::uint32_t size, JsonWriter& json) {
    if (size != std::numeric_limits<std::uint32_t>::max())
        json.member_number(name, size);
}

void append_entry(const EntryInfo& entry, std::u16string_view name, JsonWriter& json) {
    json.begin_object();
    json.member("Name", name);
    json.member("Type", entry.is_folder ? "folder" : "file");
    append_size("Size", entry.uncompressed_size, json);
    append_size("CompressedSize", entry.compressed_size, json);
    if (entry.modified.date != 0)
        json.member("Modified", params::iso_text(calendar_time(entry.modified)));
    json.member("Method", method_name(entry.method));
    json.member("CRC32", hexadecimal_number(entry.crc32));
    json.member_boolean("Encrypted", has(entry.flags, formats::zip::EntryFlag::Encrypted));
    json.end_object();
}

// An array with an object for each entry that has a name to be told.
std::u16string
entries_as_json(const ZipReader& reader,
                const std::function<std::optional<std::u16string>(const EntryInfo&)>& name_of) {
    JsonWriter json;
    json.begin_array();
    for (std::uint32_t i = 0; i < reader.entry_count(); ++i)
        if (const auto entry = reader.entry(i))
            if (const auto name = name_of(*entry))
                append_entry(*entry, *name, json);
    json.end_array();
    return utf16_from_utf8(json.take());
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
    const bool skip_mac_items = switches.has("-SkipHiddenMacOSXItems");
    const bool skip_ds_store = switches.has("-SkipDS_Store");
    if (switches.has("-Format=JSON")) {
        call.set_text(entries_as_json(reader, [&](const EntryInfo& entry) {
            std::u16string name = decoded_name(entry, encoding, decode);
            const bool is_skipped =
                (skip_mac_items && is_mac_item(name)) || (skip_ds_store && is_ds_store(name));
            return is_skipped ? std::nullopt : std::optional(std::move(name));
        }));
        return {};
    }
    std::u16string text;
    for (std::uint32_t i = 0; i < reader.entry_count(); ++i)
        if (const auto entry = reader.entry(i))
            text.append(decoded_name(*entry, encoding, decode)) += params::line_end;
    if (skip_mac_items || skip_ds_store)
        text = kept_lines(text, skip_mac_items, skip_ds_store);
    call.set_text(text);
    return {};
}

} // namespace vell::archive
