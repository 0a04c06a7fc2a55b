#include "src/windows/system.h"

#include "src/windows/documents/poppler_text.h"
#include "src/windows/parts.h"
#include "src/windows/process/large_stack.h"

#include <windows.h>

namespace vell::windows {
namespace {

class Win32Clock : public files::Clock {
  public:
    std::uint64_t milliseconds() override { return GetTickCount64(); }
    params::CalendarTime local_time() override {
        SYSTEMTIME time;
        GetLocalTime(&time);
        return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
    }
};

class Win32System : public System {
  public:
    files::FileSystem& files() override { return windows::file_system(); }
    files::TreeSystem& tree() override { return windows::tree(); }
    files::FolderSource& folders() override { return windows::folders(); }
    files::ItemProperties& properties() override { return windows::properties(); }
    files::FinalPaths& final_paths() override { return windows::final_paths(); }
    files::Places& places() override { return windows::places(); }
    files::DiskSystem& disks() override { return windows::disks(); }
    files::ShellLinks& links() override { return windows::links(); }
    files::Desktop& desktop() override { return windows::desktop(); }
    files::Commands& commands() override { return windows::commands(); }
    pictures::PictureSystem& pictures() override { return windows::pictures(); }
    files::Clock& clock() override { return clock_; }
    files::Logs& logs() override { return windows::logs(); }
    Result<std::unique_ptr<files::Digest>> new_digest(files::DigestAlgorithm algorithm) override {
        return windows::new_digest(algorithm);
    }
    // On a stack that holds what such files nest.
    Result<void> read_pdf_text(ByteSource& file, const params::ByteSink& sink,
                               std::vector<std::string>& notes) override {
        Result<void> outcome;
        run_on_large_stack([&] { outcome = read_by_poppler(file, sink, notes); });
        return outcome;
    }
    std::vector<LinkedLibrary> linked_libraries() override { return windows::linked_libraries(); }

  private:
    Win32Clock clock_;
};

} // namespace

System& system() {
    static Win32System instance;
    return instance;
}

} // namespace vell::windows
