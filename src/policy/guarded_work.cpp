#include "src/policy/guarded_work.h"

#include "src/policy/limited.h"

namespace vell::policy {
namespace {

class LimitedCommand : public files::RunningCommand {
  public:
    LimitedCommand(std::unique_ptr<RunningCommand> command, std::uint64_t most_output)
        : command_(std::move(command)), most_output_(most_output) {}

    Result<bool> has_ended() override {
        VELL_TRY(check_time());
        return command_->has_ended();
    }
    void wait(std::uint32_t milliseconds) override { command_->wait(milliseconds); }
    std::optional<std::size_t> waiting_output() override { return command_->waiting_output(); }
    Result<std::size_t> read(std::span<char> buffer) override {
        VELL_TRY(check_time());
        const std::size_t size = VELL_TRY(command_->read(buffer));
        if (size > most_output_ - output_)
            return PathGuard::refuse("commandOutputBytes");
        output_ += size;
        VELL_TRY(check_memory(size));
        return size;
    }

  private:
    std::unique_ptr<RunningCommand> command_;
    const std::uint64_t most_output_;
    std::uint64_t output_ = 0;
};

class LimitedRows : public pictures::PictureRows {
  public:
    explicit LimitedRows(std::unique_ptr<PictureRows> rows) : rows_(std::move(rows)) {}

    const pictures::PictureLayout& layout() const override { return rows_->layout(); }
    std::string profile() const override { return rows_->profile(); }
    Result<void> read_row(std::span<std::byte> row) override {
        VELL_TRY(check_time());
        return rows_->read_row(row);
    }

  private:
    std::unique_ptr<PictureRows> rows_;
};

} // namespace

Result<std::unique_ptr<files::RunningCommand>>
GuardedCommands::start(const std::u16string& command, const files::CommandSettings& settings) {
    VELL_TRY(check_time());
    files::CommandSettings guarded = settings;
    guarded.ends_with_children = policy_.ends_command_children;
    auto running = VELL_TRY(system_.commands().start(command, guarded));
    return std::unique_ptr<files::RunningCommand>(
        std::make_unique<LimitedCommand>(std::move(running), policy_.limits.command_output_bytes));
}

// The system's decoders hold a picture as a whole.
Result<std::unique_ptr<pictures::PictureRows>> GuardedPictures::decode(ByteSource& bytes,
                                                                       std::uint32_t frame) {
    VELL_TRY(check_time());
    auto rows = VELL_TRY(inner().decode(bytes, frame));
    VELL_TRY(check_memory(std::uint64_t{rows->layout().row_size()} * rows->layout().height));
    return std::unique_ptr<pictures::PictureRows>(std::make_unique<LimitedRows>(std::move(rows)));
}

Result<pictures::Picture> GuardedPictures::pdf_page(ByteSource& bytes,
                                                    const pictures::PdfPageRequest& request,
                                                    std::vector<std::string>& notes) {
    VELL_TRY(check_time());
    VELL_TRY(check_memory(std::uint64_t{request.size} * request.size * 4));
    return inner().pdf_page(bytes, request, notes);
}

Result<pictures::Picture> GuardedPictures::shell_thumbnail(const params::NativePath& path,
                                                           std::uint32_t size) {
    VELL_TRY(check_time());
    const Place place = VELL_TRY(guard_.place(path, Access::Read));
    return inner().shell_thumbnail(place.path, size);
}

// By a name alone nothing is opened.
Result<pictures::Picture> GuardedPictures::icon(const params::NativePath& path,
                                                pictures::IconOf what, std::uint32_t size) {
    if (what == pictures::IconOf::Extension)
        return inner().icon(path, what, size);
    const Place place = VELL_TRY(guard_.place(path, Access::Read));
    return inner().icon(place.path, what, size);
}

} // namespace vell::policy
