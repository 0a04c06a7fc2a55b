#include "src/metadata/writing/file_edits.h"

#include "src/files/contents/blocks.h"

#include <algorithm>
#include <utility>

namespace vell::metadata {
namespace {

Result<void> copy_bytes(files::File& from, files::File& to, std::uint64_t count,
                        files::BlockWriter& writer, std::vector<char>& buffer) {
    while (count > 0) {
        const auto most = static_cast<std::size_t>(std::min<std::uint64_t>(count, buffer.size()));
        const std::size_t done = VELL_TRY(from.read({buffer.data(), most}));
        if (done == 0)
            return Failure{ErrorCode::EndOfFile};
        VELL_TRY(writer.write(to, {buffer.data(), done}));
        count -= done;
    }
    return {};
}

} // namespace

void FileEdits::put(std::uint64_t start, std::uint64_t end, std::string bytes) {
    insert({start, end, std::move(bytes)});
}

void FileEdits::repeat(std::uint64_t place, std::uint64_t start, std::uint64_t end) {
    insert({place, place, {}, start, end});
}

void FileEdits::add(FileEdits others) {
    for (Edit& edit : others.edits_)
        insert(std::move(edit));
}

void FileEdits::insert(Edit edit) {
    const auto behind =
        std::ranges::upper_bound(edits_, std::pair(edit.start, edit.end), {},
                                 [](const Edit& each) { return std::pair(each.start, each.end); });
    edits_.insert(behind, std::move(edit));
}

std::int64_t FileEdits::growth() const {
    std::int64_t growth = 0;
    for (const Edit& edit : edits_)
        growth += static_cast<std::int64_t>(edit.bytes.size() + edit.repeated()) -
                  static_cast<std::int64_t>(edit.end - edit.start);
    return growth;
}

Result<void> FileEdits::copy(files::File& from, files::File& to) const {
    if (VELL_TRY(from.size()) != file_size_)
        return Failure{ErrorCode::Busy}; // somebody else has changed it in between
    files::BlockWriter writer;
    std::vector<char> buffer(
        static_cast<std::size_t>(std::clamp<std::uint64_t>(file_size_, 1, files::block_size)));
    std::uint64_t copied = 0;
    for (const Edit& edit : edits_) {
        VELL_TRY(copy_bytes(from, to, edit.start - copied, writer, buffer));
        VELL_TRY(writer.write(to, edit.bytes));
        if (edit.repeated() > 0) {
            const auto start = static_cast<std::int64_t>(edit.repeated_start);
            VELL_TRY(from.seek(files::SeekFrom::Start, start));
            VELL_TRY(copy_bytes(from, to, edit.repeated(), writer, buffer));
        }
        if (edit.end > edit.start || edit.repeated() > 0)
            VELL_TRY(from.seek(files::SeekFrom::Start, static_cast<std::int64_t>(edit.end)));
        copied = edit.end;
    }
    VELL_TRY(copy_bytes(from, to, file_size_ - copied, writer, buffer));
    return writer.flush(to);
}

} // namespace vell::metadata
