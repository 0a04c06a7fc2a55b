#include "src/formats/window.h"

#include <algorithm>
#include <limits>

namespace vell::formats {

Window Window::part(std::uint64_t offset, std::uint64_t count) const {
    Window part = *this;
    const std::uint64_t skipped = std::min(offset, size_);
    part.start_ = start_ + skipped;
    part.size_ = std::min(count, size_ - skipped);
    part.announced_ = count;
    part.position_ = 0;
    return part;
}

void Window::skip(std::uint64_t count) {
    const std::uint64_t room = std::numeric_limits<std::uint64_t>::max() - position_;
    position_ += std::min(count, room);
}

Read<std::size_t> Window::read(std::span<char> bytes) {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), remaining()));
    if (count == 0)
        return std::size_t{0};
    const Result<std::size_t> done = source_->read_at(start_ + position_, bytes.first(count));
    if (!done)
        return Failure{Fault{Damage::Unreadable, done.error()}};
    position_ += *done;
    return *done;
}

Read<void> Window::read_exactly(std::span<char> bytes) {
    if (VELL_TRY(read(bytes)) < bytes.size())
        return fault(Damage::CutOff);
    return {};
}

Read<std::string> Window::read_bytes(std::uint64_t count) {
    const std::uint64_t there = std::min(count, remaining());
    if (there > longest_block)
        return fault(Damage::TooLarge);
    std::string bytes(static_cast<std::size_t>(there), '\0');
    bytes.resize(VELL_TRY(read(bytes)));
    return bytes;
}

Read<std::string> Window::read_rest() {
    const std::uint64_t wanted = announced_ - std::min(position_, announced_);
    if (wanted > remaining())
        return fault(Damage::CutOff);
    std::string bytes = VELL_TRY(read_bytes(wanted));
    if (bytes.size() < wanted)
        return fault(Damage::CutOff);
    return bytes;
}

} // namespace vell::formats
