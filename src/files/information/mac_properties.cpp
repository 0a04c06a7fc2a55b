#include "src/files/information/mac_properties.h"

#include "src/base/ascii.h"
#include "src/files/paths/path_parts.h"
#include "src/system/system.h"

#include <algorithm>

namespace vell::files {
namespace {

using params::Call;

struct TypeOfExtension {
    std::u16string_view extension;
    std::string_view type;
};

// The codes that programs on the Mac gave to files of these kinds.
constexpr TypeOfExtension types_of_extensions[] = {
    {u"txt", "TEXT"},  {u"text", "TEXT"}, {u"csv", "TEXT"},  {u"tab", "TEXT"},  {u"tsv", "TEXT"},
    {u"mer", "TEXT"},  {u"htm", "TEXT"},  {u"css", "TEXT"},  {u"html", "TEXT"}, {u"xml", "TEXT"},
    {u"xsl", "TEXT"},  {u"json", "TEXT"}, {u"js", "TEXT"},   {u"log", "TEXT"},  {u"ini", "TEXT"},
    {u"md", "TEXT"},   {u"rtf", "RTF "},  {u"pdf", "PDF "},  {u"jpg", "JPEG"},  {u"jpeg", "JPEG"},
    {u"jpe", "JPEG"},  {u"png", "PNGf"},  {u"gif", "GIFf"},  {u"tif", "TIFF"},  {u"tiff", "TIFF"},
    {u"bmp", "BMPf"},  {u"pct", "PICT"},  {u"pict", "PICT"}, {u"psd", "8BPS"},  {u"eps", "EPSF"},
    {u"mov", "MooV"},  {u"qt", "MooV"},   {u"mp4", "mpg4"},  {u"m4v", "M4V "},  {u"mpg", "MPEG"},
    {u"mpeg", "MPEG"}, {u"avi", "VfW "},  {u"mp3", "MPG3"},  {u"m4a", "M4A "},  {u"wav", "WAVE"},
    {u"aif", "AIFF"},  {u"aiff", "AIFF"}, {u"mid", "Midi"},  {u"doc", "W8BN"},  {u"xls", "XLS8"},
    {u"zip", "ZIP "},  {u"exe", "APPL"},  {u"lnk", "alis"},
};

struct Item {
    NativePath path;
    ItemKind kind;
};

// What stands at the path of a call; NotFound for nothing.
Result<Item> item_of(Call& call, FileSystem& files) {
    NativePath path = VELL_TRY(call.path(1));
    const ItemKind kind = files.kind_of(path);
    if (kind == ItemKind::None)
        return Failure{ErrorCode::NotFound};
    return Item{std::move(path), kind};
}

} // namespace

Result<void> get_file_type(Call& call, System& system) {
    const Item item = VELL_TRY(item_of(call, system.files()));
    if (item.kind == ItemKind::Folder) {
        call.set_literal("fold");
        return {};
    }
    const std::u16string_view extension = extension_of(item.path.wide);
    const auto known =
        std::ranges::find_if(types_of_extensions, [extension](const TypeOfExtension& type) {
            return equal_ignoring_case(extension, type.extension);
        });
    call.set_literal(known == std::end(types_of_extensions) ? "" : known->type);
    return {};
}

Result<void> get_file_creator(Call& call, System& system) {
    VELL_TRY(item_of(call, system.files()));
    call.set_literal("");
    return {};
}

Result<void> set_finder_comment(Call& call, System&) {
    VELL_TRY(call.path(1));
    return Failure{ErrorCode::NotAvailable};
}

Result<void> reference_to_clip(Call&, System&) {
    return Failure{ErrorCode::NotAvailable};
}

} // namespace vell::files
