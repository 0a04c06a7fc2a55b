#include "src/files/contents/contents.h"

#include "src/base/utf8.h"
#include "src/base/utf8_stream.h"
#include "src/system/system.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <vector>

namespace vell::files {
namespace {

using params::Call;
using params::EncodedText;
using params::LineEndings;
using params::SwitchSet;
using params::TextEncoding;

constexpr std::size_t largest_range = std::numeric_limits<std::int32_t>::max();
constexpr std::size_t device_piece = 102'400;

struct ByteRange {
    std::uint32_t start = 0;
    std::uint32_t size = 0; // 0: up to the end
};

// The bytes of a range, and whether the file goes on before and after them.
struct RangeBytes {
    std::string bytes;
    bool more_before = false;
    bool more_after = false;
};

Result<RangeBytes> read_file_range(File& file, std::uint64_t length, ByteRange range) {
    if (range.start >= length)
        return Failure{ErrorCode::EndOfFile};
    VELL_TRY(file.seek(SeekFrom::Start, range.start));
    const std::uint64_t available = length - range.start;
    std::uint64_t count =
        range.size == 0 ? available : std::min<std::uint64_t>(range.size, available);
    count = std::min<std::uint64_t>(count, largest_range);

    RangeBytes result;
    Result<std::size_t> done = std::size_t{0};
    // GCC 12 may announce more room than was asked for: its number does not count.
    result.bytes.resize_and_overwrite(count, [&](char* buffer, std::size_t) {
        done = file.read({buffer, static_cast<std::size_t>(count)});
        return done ? *done : 0;
    });
    if (!done)
        return Failure{done.error()};
    result.more_before = range.start > 0;
    result.more_after = range.start + result.bytes.size() < length;
    return result;
}

// A device without a length is read in pieces; its end is not an error.
Result<RangeBytes> read_device_range(File& file, ByteRange range) {
    std::vector<char> piece(device_piece);
    std::uint64_t to_skip = range.start;
    const std::size_t wanted = range.size == 0 ? largest_range : range.size;
    RangeBytes result;
    while (result.bytes.size() < wanted) {
        const std::uint64_t open = to_skip > 0 ? to_skip : wanted - result.bytes.size();
        const std::size_t done = VELL_TRY(file.read(
            {piece.data(), static_cast<std::size_t>(std::min<std::uint64_t>(open, piece.size()))}));
        if (done == 0)
            return result;
        if (to_skip > 0) {
            to_skip -= done;
            result.more_before = true;
        } else {
            result.bytes.append(piece.data(), done);
        }
    }
    result.more_after = true;
    return result;
}

Result<RangeBytes> read_range(FileSystem& files, const NativePath& path, ByteRange range) {
    const std::unique_ptr<File> file = VELL_TRY(files.open(path, Permission::Read));
    const std::uint64_t length = VELL_TRY(file->size());
    return length > 0 ? read_file_range(*file, length, range) : read_device_range(*file, range);
}

void set_utf8_text(Call& call, const RangeBytes& range, LineEndings line_endings) {
    const std::string_view bytes = range.bytes;
    const std::size_t cut_before = range.more_before ? cut_sequence_at_start(bytes) : 0;
    const std::size_t cut_after =
        range.more_after ? cut_sequence_at_end(bytes.substr(cut_before)) : 0;
    const std::string_view whole = bytes.substr(cut_before, bytes.size() - cut_before - cut_after);
    constexpr EncodedText cut_note{invalid_utf8, TextEncoding::AsciiMac};
    if (!is_valid_utf8(whole)) {
        const std::array pieces{
            EncodedText{params::invalid_utf8_trying_native, TextEncoding::AsciiMac},
            EncodedText{bytes, TextEncoding::Native}};
        call.set_decoded_text(pieces, line_endings);
        return;
    }
    std::vector<EncodedText> pieces;
    if (cut_before > 0)
        pieces.push_back(cut_note);
    pieces.push_back({whole, TextEncoding::Utf8});
    if (cut_after > 0)
        pieces.push_back(cut_note);
    call.set_decoded_text(pieces, line_endings);
}

void set_decoded(Call& call, const RangeBytes& range, TextEncoding encoding,
                 LineEndings line_endings) {
    if (encoding == TextEncoding::Utf8)
        set_utf8_text(call, range, line_endings);
    else
        call.set_decoded_text(std::array{EncodedText{range.bytes, encoding}}, line_endings);
}

Result<void> give_range(Call& call, FileSystem& files, const NativePath& path, ByteRange range,
                        TextEncoding encoding, LineEndings line_endings) {
    set_decoded(call, VELL_TRY(read_range(files, path, range)), encoding, line_endings);
    return {};
}

} // namespace

Result<void> get_contents(Call& call, System& system) {
    const SwitchSet switches = call.switches();
    const TextEncoding encoding = params::contents_encoding_of(switches, TextEncoding::Native);

    const NativePath path = VELL_TRY(call.path(1));
    ByteRange range;
    range.start = VELL_TRY(call.byte_count(2));
    range.size = VELL_TRY(call.byte_count(3));
    return give_range(call, system.files(), path, range, encoding, reading_line_endings(switches));
}

LineEndings reading_line_endings(const SwitchSet& switches) {
    return switches.has("-ConvertToFMPLinebreaks") ? LineEndings::Host : LineEndings::Keep;
}

Result<void> give_contents(Call& call, FileSystem& files, const NativePath& path,
                           TextEncoding encoding, LineEndings line_endings) {
    return give_range(call, files, path, {}, encoding, line_endings);
}

void give_bytes(Call& call, std::string bytes, TextEncoding encoding) {
    set_decoded(call, {std::move(bytes)}, encoding, LineEndings::Keep);
}

} // namespace vell::files
