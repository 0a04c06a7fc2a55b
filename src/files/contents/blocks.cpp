#include "src/files/contents/blocks.h"

#include <algorithm>

namespace vell::files {

Result<void> BlockWriter::write(File& to, std::string_view bytes) {
    while (gathered_.size() + bytes.size() >= block_size) {
        const std::size_t room = block_size - gathered_.size();
        if (gathered_.empty()) {
            VELL_TRY(to.write(bytes.substr(0, block_size)));
        } else {
            gathered_.insert(gathered_.end(), bytes.begin(), bytes.begin() + room);
            VELL_TRY(flush(to));
        }
        bytes.remove_prefix(room);
    }
    gathered_.insert(gathered_.end(), bytes.begin(), bytes.end());
    return {};
}

Result<void> BlockWriter::flush(File& to) {
    if (gathered_.empty())
        return {};
    VELL_TRY(to.write({gathered_.data(), gathered_.size()}));
    gathered_.clear();
    return {};
}

Result<std::size_t> Copier::copy_some(File& from, File& to, std::size_t most) {
    const std::size_t done = VELL_TRY(from.read({buffer_.data(), most}));
    VELL_TRY(to.write({buffer_.data(), done}));
    return done;
}

Result<void> Copier::copy(File& from, File& to, std::uint64_t count) {
    while (count > 0) {
        const auto most = static_cast<std::size_t>(std::min<std::uint64_t>(count, buffer_.size()));
        const std::size_t done = VELL_TRY(copy_some(from, to, most));
        if (done == 0)
            return Failure{ErrorCode::EndOfFile};
        count -= done;
    }
    return {};
}

Result<void> Copier::copy_rest(File& from, File& to) {
    while (VELL_TRY(copy_some(from, to, buffer_.size())) > 0)
        continue;
    return {};
}

} // namespace vell::files
