#include "src/system/file_access.h"

#include "src/system/system.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

namespace vell::files {
namespace {

class MemoryFile : public File {
  public:
    explicit MemoryFile(std::string contents) : contents_(std::move(contents)) {}

    Result<std::uint64_t> size() override { return contents_.size(); }

    Result<void> seek(SeekFrom from, std::int64_t offset) override {
        const std::int64_t base = from == SeekFrom::Start ? 0
                                  : from == SeekFrom::End
                                      ? static_cast<std::int64_t>(contents_.size())
                                      : std::int64_t{position_};
        // Neither base exceeds 32 bits, so an offset of more is out of range whatever the base.
        constexpr std::int64_t limit = std::numeric_limits<std::uint32_t>::max();
        if (offset < -base)
            return Failure{ErrorCode::BeforeStart};
        if (offset > limit - base)
            return Failure{ErrorCode::MemoryFileTooLarge};
        position_ = static_cast<std::uint32_t>(base + offset);
        return {};
    }

    Result<std::size_t> read(std::span<char> buffer) override {
        if (position_ >= contents_.size())
            return std::size_t{0};
        const std::size_t count = std::min(buffer.size(), contents_.size() - position_);
        std::memcpy(buffer.data(), contents_.data() + position_, count);
        position_ += static_cast<std::uint32_t>(count);
        return count;
    }

    Result<void> write(std::string_view bytes) override {
        if (bytes.size() > std::numeric_limits<std::uint32_t>::max() - position_)
            return Failure{ErrorCode::MemoryFileTooLarge};
        if (contents_.size() < position_ + bytes.size())
            contents_.resize(position_ + bytes.size());
        std::memcpy(contents_.data() + position_, bytes.data(), bytes.size());
        position_ += static_cast<std::uint32_t>(bytes.size());
        return {};
    }

    Result<void> set_end_of_file() override {
        contents_.resize(position_);
        return {};
    }

    Result<void> close() override { return {}; }

  private:
    std::string contents_;
    std::uint32_t position_ = 0;
};

} // namespace

std::unique_ptr<File> memory_file(std::string contents) {
    return std::make_unique<MemoryFile>(std::move(contents));
}

} // namespace vell::files
