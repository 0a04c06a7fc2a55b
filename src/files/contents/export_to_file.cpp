#include "src/files/contents/export_to_file.h"

#include "src/files/contents/temporary_copy.h"
#include "src/files/contents/written_text.h"
#include "src/files/tree/item_names.h"
#include "src/system/system.h"

namespace vell::files {
namespace {

using params::Call;
using params::TextEncoding;

Result<void> write_source(Call& call, File& file, const std::string& text) {
    if (!call.is_container(1))
        return file.write(text);
    return call.read_container(1, [&](std::string_view bytes) { return file.write(bytes); });
}

} // namespace

Result<void> export_to_file(Call& call, System& system) {
    const params::SwitchSet switches = call.switches();
    const NativePath target = VELL_TRY(path_to_make(call.path(2)));
    std::string text;
    if (!call.is_container(1))
        text = VELL_TRY(encode_contents(
            call, call.text(1), params::contents_encoding_of(switches, TextEncoding::Utf8)));
    const Replace replace = switches.has("-OverwriteExisting") ? Replace::Yes : Replace::No;
    if (replace == Replace::No && system.files().kind_of(target) != ItemKind::None)
        return Failure{ErrorCode::AlreadyExists};

    VELL_TRY(write_whole_file(call, system.files(), target, replace,
                              [&](File& file) { return write_source(call, file, text); }));
    call.set_done();
    return {};
}

} // namespace vell::files
