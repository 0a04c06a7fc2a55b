#include "src/pictures/decoding/spill_file.h"

#include <string_view>
#include <utility>

namespace vell::pictures {
namespace {

class TemporarySpillFile final : public SpillFile {
  public:
    explicit TemporarySpillFile(std::unique_ptr<files::File> file) : file_(std::move(file)) {}

    bool write(std::uint64_t position, std::span<const char> bytes) override {
        return seek(position) && file_->write({bytes.data(), bytes.size()});
    }
    bool read(std::uint64_t position, std::span<char> bytes) override {
        if (!seek(position))
            return false;
        while (!bytes.empty()) {
            const Result<std::size_t> count = file_->read(bytes);
            if (!count || *count == 0)
                return false;
            bytes = bytes.subspan(*count);
        }
        return true;
    }

  private:
    bool seek(std::uint64_t position) {
        return file_->seek(files::SeekFrom::Start, static_cast<std::int64_t>(position)).has_value();
    }

    std::unique_ptr<files::File> file_;
};

} // namespace

std::unique_ptr<SpillFile> new_spill_file(files::FileSystem& files) {
    try { // called from within libraries that do not know exceptions
        auto file = files.open_temporary();
        if (!file)
            return nullptr;
        return std::make_unique<TemporarySpillFile>(std::move(file).value());
    } catch (...) {
        return nullptr;
    }
}

} // namespace vell::pictures
