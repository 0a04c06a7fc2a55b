#include "src/files/contents/source.h"

#include "src/files/paths/path_parts.h"

#include <utility>

namespace vell::files {
namespace {

class FileOverBytes final : public File {
  public:
    explicit FileOverBytes(std::unique_ptr<ByteSource> bytes) : bytes_(std::move(bytes)) {}

    Result<std::uint64_t> size() override { return bytes_->size(); }
    Result<void> seek(SeekFrom from, std::int64_t offset) override {
        const std::uint64_t base = from == SeekFrom::Start ? 0
                                   : from == SeekFrom::End ? bytes_->size()
                                                           : position_;
        const std::int64_t position = static_cast<std::int64_t>(base) + offset;
        if (position < 0)
            return Failure{ErrorCode::BeforeStart};
        position_ = static_cast<std::uint64_t>(position);
        return {};
    }
    Result<std::size_t> read(std::span<char> buffer) override {
        const std::size_t count = VELL_TRY(bytes_->read_at(position_, buffer));
        position_ += count;
        return count;
    }
    Result<void> write(std::string_view) override { return Failure{ErrorCode::Busy}; }
    Result<void> set_end_of_file() override { return Failure{ErrorCode::Busy}; }
    Result<void> close() override { return {}; }

  private:
    std::unique_ptr<ByteSource> bytes_;
    std::uint64_t position_ = 0;
};

} // namespace

std::unique_ptr<File> file_over(std::unique_ptr<ByteSource> bytes) {
    return std::make_unique<FileOverBytes>(std::move(bytes));
}

Result<Source> open_source(params::Call& call, std::size_t index, FileSystem& files,
                           Sharing sharing) {
    Source source;
    if (call.is_container(index)) {
        source.file = file_over(VELL_TRY(call.open_container(index)));
        source.name = call.container_name(index);
        return source;
    }
    source.path = VELL_TRY(call.path(index));
    source.file = VELL_TRY(sharing == Sharing::Shared ? files.open_shared(*source.path)
                                                      : files.open(*source.path, Permission::Read));
    source.name = last_name(source.path->wide);
    return source;
}

} // namespace vell::files
