#include "src/files/export_to_file.h"

#include "src/files/path_parts.h"
#include "src/files/write_turn.h"
#include "src/files/written_text.h"

namespace vell::files {
namespace {

using params::Call;
using params::TextEncoding;

// A name of its own in the folder of `target`.
Result<NativePath> name_beside(FileSystem& files, const NativePath& target) {
    constexpr std::u16string_view ends_of_folders = u"\\/:";
    const std::u16string temporary = VELL_TRY(files.temporary_name({})).wide;
    // npos + 1 is 0: a bare name stands in no folder that the path names.
    const std::size_t folder_length = target.wide.find_last_of(ends_of_folders) + 1;
    return NativePath{target.wide.substr(0, folder_length) +
                          temporary.substr(temporary.find_last_of(ends_of_folders) + 1),
                      std::nullopt};
}

Result<void> write_source(Call& call, File& file, const std::string& text) {
    if (!call.is_container(1))
        return file.write(text);
    return call.read_container(1, [&](std::string_view bytes) { return file.write(bytes); });
}

Result<void> write_and_rename(Call& call, FileSystem& files, const std::string& text,
                              const NativePath& beside, const NativePath& target, Replace replace) {
    {
        const std::unique_ptr<File> file = VELL_TRY(files.open(beside, Permission::Write));
        VELL_TRY(write_source(call, *file, text));
        VELL_TRY(file->close());
    }
    return files.rename(beside, target, replace);
}

} // namespace

Result<void> export_to_file(Call& call, FileSystem& files) {
    if (call.parameter_count() < 3)
        return Failure{ErrorCode::BadParameter};
    const params::SwitchSet switches = call.switches();
    const NativePath target = VELL_TRY(call.path(2));
    std::string text;
    if (!call.is_container(1))
        text = VELL_TRY(encode_contents(
            call, call.text(1), params::contents_encoding_of(switches, TextEncoding::Utf8)));
    const Replace replace = switches.has("-OverwriteExisting") ? Replace::Yes : Replace::No;
    if (replace == Replace::No && files.kind_of(target) != ItemKind::None)
        return Failure{ErrorCode::AlreadyExists};
    VELL_TRY(check_new_name(target.wide));

    const WriteTurn turn = VELL_TRY(WriteTurn::take(target));
    const NativePath beside = VELL_TRY(name_beside(files, target));
    VELL_TRY(files.create_new(beside));
    const Result<void> done = write_and_rename(call, files, text, beside, target, replace);
    if (!done) {
        static_cast<void>(files.remove(beside)); // the first failure is the one to report
        return done;
    }
    call.set_done();
    return {};
}

} // namespace vell::files
