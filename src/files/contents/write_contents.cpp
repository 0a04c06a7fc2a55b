#include "src/files/contents/write_contents.h"

#include "src/files/contents/write_turn.h"
#include "src/files/contents/written_text.h"
#include "src/files/paths/defaults.h"
#include "src/system/system.h"

#include <algorithm>

namespace vell::files {
namespace {

using params::Call;
using params::LineEndings;
using params::TextEncoding;

enum class Place : std::uint8_t { InsteadOfAll, AtEnd };

struct TextToWrite {
    std::u16string text; // with the line ends of the file
    TextEncoding encoding;
};

TextToWrite text_to_write(Call& call, std::size_t text_index) {
    // A step's options stand behind its text.
    const params::SwitchSet switches = call.switches();
    const TextEncoding encoding = params::contents_encoding_of(switches, TextEncoding::Native,
                                                               call.step_option(text_index + 1));
    const LineEndings line_endings =
        params::line_endings_of(switches, call.step_option(text_index + 2));
    TextToWrite result{call.text(text_index), encoding};
    params::convert_line_endings(result.text, line_endings);
    return result;
}

Result<void> cut_to(File& file, std::uint64_t length) {
    VELL_TRY(file.seek(SeekFrom::Start, static_cast<std::int64_t>(length)));
    return file.set_end_of_file();
}

Result<void> add_at_end(File& file, std::string_view bytes) {
    VELL_TRY(file.seek(SeekFrom::End, 0));
    VELL_TRY(file.write(bytes));
    return file.set_end_of_file();
}

// What goes beyond the old contents is written first, behind them: the bytes themselves take the
// room that they need, where a mere new length would be a promise that some disks do not keep. So a
// full disk shows while the old contents are whole, and what is left to write has its room already.
Result<void> write_instead(File& file, std::uint64_t old_length, std::string_view bytes) {
    const std::string_view beyond = bytes.substr(std::min<std::uint64_t>(old_length, bytes.size()));
    if (!beyond.empty())
        VELL_TRY(add_at_end(file, beyond));
    VELL_TRY(file.seek(SeekFrom::Start, 0));
    VELL_TRY(file.write(bytes.substr(0, bytes.size() - beyond.size())));
    if (beyond.empty())
        return file.set_end_of_file();
    return {};
}

Result<void> write_text(Call& call, FileSystem& files, const NativePath& path,
                        const TextToWrite& content, Place place) {
    const WriteTurn turn = VELL_TRY(WriteTurn::take(path));
    const std::unique_ptr<File> file = VELL_TRY(files.open(path, Permission::Write));
    const std::string bytes = VELL_TRY(encode_contents(call, content.text, content.encoding));
    const std::uint64_t old_length = VELL_TRY(file->size());
    const Result<void> written =
        place == Place::AtEnd ? add_at_end(*file, bytes) : write_instead(*file, old_length, bytes);
    if (!written)
        static_cast<void>(cut_to(*file, old_length)); // the first failure is the one to report
    VELL_TRY(written);
    VELL_TRY(file->close());
    call.set_done();
    return {};
}

Result<void> write_to_default_file(Call& call, FileSystem& files, Place place) {
    const TextToWrite content = text_to_write(call, 1);
    const std::optional<NativePath> path = defaults().file();
    if (!path)
        return Failure{ErrorCode::BadParameter};
    return write_text(call, files, *path, content, place);
}

Result<void> write_to_file(Call& call, FileSystem& files, Place place) {
    const TextToWrite content = text_to_write(call, 2);
    const NativePath path = VELL_TRY(call.path(1));
    return write_text(call, files, path, content, place);
}

} // namespace

Result<void> set_contents(Call& call, System& system) {
    return write_to_default_file(call, system.files(), Place::InsteadOfAll);
}

Result<void> append_contents(Call& call, System& system) {
    return write_to_default_file(call, system.files(), Place::AtEnd);
}

Result<void> set_contents_of_file(Call& call, System& system) {
    return write_to_file(call, system.files(), Place::InsteadOfAll);
}

Result<void> append_to_file(Call& call, System& system) {
    return write_to_file(call, system.files(), Place::AtEnd);
}

} // namespace vell::files
