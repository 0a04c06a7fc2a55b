#include "src/files/contents/buffered_reader.h"

#include <algorithm>
#include <limits>

namespace vell::files {

Result<BufferedReader> BufferedReader::over(File& file, std::size_t buffer_size) {
    const std::uint64_t size = VELL_TRY(file.size());
    VELL_TRY(file.seek(SeekFrom::Start, 0));
    return BufferedReader(file, size, buffer_size);
}

BufferedReader::BufferedReader(File& file, std::uint64_t size, std::size_t buffer_size)
    : file_(&file), size_(size), buffer_(buffer_size) {}

void BufferedReader::skip(std::uint64_t count) {
    const std::uint64_t room = std::numeric_limits<std::uint64_t>::max() - position_;
    position_ += std::min(count, room);
}

Result<std::size_t> BufferedReader::read_from_file(std::uint64_t position, std::span<char> bytes) {
    if (position >= size_)
        return std::size_t{0};
    const auto most =
        static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), size_ - position));
    if (position != file_position_) {
        VELL_TRY(file_->seek(SeekFrom::Start, static_cast<std::int64_t>(position)));
        file_position_ = position;
    }
    std::size_t done = 0;
    while (done < most) {
        const std::size_t count = VELL_TRY(file_->read(bytes.subspan(done, most - done)));
        if (count == 0)
            break;
        done += count;
        file_position_ += count;
    }
    return done;
}

Result<std::size_t> BufferedReader::read(std::span<char> bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        if (position_ >= buffer_start_ && position_ - buffer_start_ < buffered_) {
            const auto from = static_cast<std::size_t>(position_ - buffer_start_);
            const std::size_t count = std::min(bytes.size() - done, buffered_ - from);
            std::copy_n(buffer_.data() + from, count, bytes.data() + done);
            done += count;
            position_ += count;
            continue;
        }
        const std::span<char> rest = bytes.subspan(done);
        if (rest.size() >= buffer_.size()) {
            const std::size_t count = VELL_TRY(read_from_file(position_, rest));
            position_ += count;
            return done + count;
        }
        buffered_ = 0;
        const std::size_t count = VELL_TRY(read_from_file(position_, buffer_));
        if (count == 0)
            return done;
        buffer_start_ = position_;
        buffered_ = count;
    }
    return done;
}

Result<void> BufferedReader::read_exactly(std::span<char> bytes) {
    if (VELL_TRY(read(bytes)) < bytes.size())
        return Failure{ErrorCode::EndOfFile};
    return {};
}

Result<std::string> BufferedReader::read_bytes(std::uint64_t count) {
    std::string bytes(static_cast<std::size_t>(std::min(count, remaining())), '\0');
    bytes.resize(VELL_TRY(read(bytes)));
    return bytes;
}

Result<std::uint8_t> BufferedReader::read_byte() {
    if (position_ >= buffer_start_ && position_ - buffer_start_ < buffered_)
        return static_cast<std::uint8_t>(buffer_[position_++ - buffer_start_]);
    char byte = 0;
    VELL_TRY(read_exactly({&byte, 1}));
    return static_cast<std::uint8_t>(byte);
}

} // namespace vell::files
