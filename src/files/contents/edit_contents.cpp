#include "src/files/contents/edit_contents.h"

#include "src/files/contents/rewriting.h"
#include "src/files/contents/substituter.h"
#include "src/files/contents/written_text.h"

#include <algorithm>
#include <limits>

namespace vell::files {
namespace {

using params::Call;
using params::TextEncoding;
using params::Unencodable;

// Before anything is written. A number beyond the range is not known exactly: it lies behind the
// end of a short file, and anywhere in a long one.
Result<void> check_position(FileSystem& files, const NativePath& source, std::uint64_t position) {
    const std::unique_ptr<File> file = VELL_TRY(files.open(source, Permission::Read));
    if (position > VELL_TRY(file->size()))
        return Failure{ErrorCode::EndOfFile};
    if (position > std::numeric_limits<std::int32_t>::max())
        return Failure{ErrorCode::NumberOutOfRange};
    return file->close();
}

Result<void> substitute_all(Substituter& substituter, std::span<char> buffer, File& from) {
    for (;;) {
        const std::size_t done = VELL_TRY(from.read(buffer));
        if (done == 0)
            return substituter.finish();
        VELL_TRY(substituter.feed({buffer.data(), done}));
    }
}

} // namespace

Result<void> insert_contents(Call& call, FileSystem& files) {
    if (call.parameter_count() < 4)
        return Failure{ErrorCode::BadParameter};
    const RewrittenFile file = VELL_TRY(rewritten_file(call, files, 1, 2));
    if (file.destination && files.kind_of(*file.destination) != ItemKind::None)
        return Failure{ErrorCode::AlreadyExists};
    const auto position = static_cast<std::uint64_t>(std::max<std::int64_t>(call.number(4), 0));
    const params::SwitchSet switches = call.switches();
    const TextEncoding encoding =
        switches.has("-UTF8Charset")
            ? TextEncoding::Utf8
            : params::contents_encoding_of(switches, TextEncoding::Native, call.step_option(5));
    std::u16string text = call.text(3);
    params::convert_line_endings(text, params::line_endings_of(switches, call.step_option(6)));
    const std::string bytes = VELL_TRY(encode_contents(call, text, encoding));

    VELL_TRY(check_position(files, file.source, position));
    Copier copier;
    const auto work = [&](File& from, File& to) -> Result<void> {
        VELL_TRY(copier.copy(from, to, position));
        VELL_TRY(to.write(bytes));
        return copier.copy_rest(from, to);
    };
    VELL_TRY(rewrite(call, files, file, work));
    call.set_done();
    return {};
}

Result<void> substitute(Call& call, FileSystem& files) {
    if (call.parameter_count() < 5)
        return Failure{ErrorCode::BadParameter};
    const RewrittenFile file = VELL_TRY(rewritten_file(call, files, 1, 2));
    const params::SwitchSet switches = call.switches();
    const TextEncoding encoding =
        params::contents_encoding_of(switches, TextEncoding::Utf8, call.step_option(6));
    const bool ignore_case = call.is_step() ? call.step_option(5) == 1 : switches.has("IgnoreCase");
    const std::string search = VELL_TRY(call.encode(call.text(3), encoding, Unencodable::Replace));
    if (search.empty())
        return Failure{ErrorCode::BadParameter};
    std::string replacement = VELL_TRY(call.encode(call.text(4), encoding, Unencodable::Replace));
    if (files.kind_of(file.source) == ItemKind::None)
        return Failure{ErrorCode::NotFound};

    File* target = nullptr;
    BlockWriter writer;
    std::vector<char> buffer(block_size);
    Substituter substituter(search, std::move(replacement),
                            ignore_case ? LetterCase::Ignore : LetterCase::Exact,
                            [&](std::string_view bytes) { return writer.write(*target, bytes); });
    const auto work = [&](File& from, File& to) -> Result<void> {
        target = &to;
        VELL_TRY(substitute_all(substituter, buffer, from));
        return writer.flush(to);
    };
    VELL_TRY(rewrite(call, files, file, work));
    call.set_done();
    return {};
}

} // namespace vell::files
