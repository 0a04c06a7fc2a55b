#include "src/files/contents/edit_contents.h"

#include "src/files/contents/blocks.h"
#include "src/files/contents/rewriting.h"
#include "src/files/contents/substituter.h"
#include "src/files/contents/written_text.h"
#include "src/system/system.h"

#include <algorithm>
#include <limits>

namespace vell::files {
namespace {

using params::Call;
using params::TextEncoding;
using params::Unencodable;

// Parameters by position, then the options of the two steps.
constexpr std::size_t source_position = 1;
constexpr std::size_t destination_position = 2;
constexpr std::size_t inserted_text_position = 3;
constexpr std::size_t insert_at_position = 4;
constexpr std::size_t search_position = 3;
constexpr std::size_t replacement_position = 4;
constexpr std::size_t insert_encoding_option = 5;
constexpr std::size_t insert_line_endings_option = 6;
constexpr std::size_t ignore_case_option = 5;
constexpr std::size_t substitute_encoding_option = 6;

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

Result<void> insert_contents(Call& call, System& system) {
    const RewrittenFile file =
        VELL_TRY(rewritten_file(call, system.files(), source_position, destination_position));
    if (file.destination && system.files().kind_of(*file.destination) != ItemKind::None)
        return Failure{ErrorCode::AlreadyExists};
    const auto position =
        static_cast<std::uint64_t>(std::max<std::int64_t>(call.number(insert_at_position), 0));
    const params::SwitchSet switches = call.switches();
    const TextEncoding encoding =
        switches.has("-UTF8Charset")
            ? TextEncoding::Utf8
            : params::contents_encoding_of(switches, TextEncoding::Native,
                                           call.step_option(insert_encoding_option));
    std::u16string text = call.text(inserted_text_position);
    params::convert_line_endings(
        text, params::line_endings_of(switches, call.step_option(insert_line_endings_option)));
    const std::string bytes = VELL_TRY(encode_contents(call, text, encoding));

    VELL_TRY(check_position(system.files(), file.source, position));
    Copier copier;
    const auto work = [&](File& from, File& to) -> Result<void> {
        VELL_TRY(copier.copy(from, to, position));
        VELL_TRY(to.write(bytes));
        return copier.copy_rest(from, to);
    };
    VELL_TRY(rewrite(call, system.files(), file, work));
    call.set_done();
    return {};
}

Result<void> substitute(Call& call, System& system) {
    const RewrittenFile file =
        VELL_TRY(rewritten_file(call, system.files(), source_position, destination_position));
    const params::SwitchSet switches = call.switches();
    const TextEncoding encoding = params::contents_encoding_of(
        switches, TextEncoding::Utf8, call.step_option(substitute_encoding_option));
    const bool ignore_case = call.option_is(ignore_case_option, 1, switches, "IgnoreCase");
    const std::string search =
        VELL_TRY(call.encode(call.text(search_position), encoding, Unencodable::Replace));
    if (search.empty())
        return Failure{ErrorCode::BadParameter};
    std::string replacement =
        VELL_TRY(call.encode(call.text(replacement_position), encoding, Unencodable::Replace));
    if (system.files().kind_of(file.source) == ItemKind::None)
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
    VELL_TRY(rewrite(call, system.files(), file, work));
    call.set_done();
    return {};
}

} // namespace vell::files
