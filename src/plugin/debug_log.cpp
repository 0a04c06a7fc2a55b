#include "src/plugin/debug_log.h"

namespace vell::plugin {
void DebugLog::switch_on() {
    on_ = true;
    add("Log started.");
}

void DebugLog::switch_off() {
    on_ = false;
}

void DebugLog::add(std::string_view line) {
    if (on_)
        add_always(line);
}

void DebugLog::add_always(std::string_view line) {
    const std::lock_guard lock(mutex_);
    if (file_size_ < file_limit)
        append(line);
}

void DebugLog::append(std::string_view line) {
    lines_.append(line).append("\r");
    if (lines_.size() > memory_limit)
        move_to_file();
}

void DebugLog::move_to_file() {
    if (!file_)
        file_ = logs_.new_overflow_file();
    if (!file_ || !file_->write(file_size_, lines_)) {
        drop_older_half();
        return;
    }
    file_size_ += lines_.size();
    lines_ = file_size_ < file_limit ? "" : "Log full.\r";
}

void DebugLog::drop_older_half() {
    lines_.erase(0, lines_.find('\r', lines_.size() / 2) + 1);
    lines_.insert(0, "Older lines dropped.\r");
}

std::string DebugLog::take() {
    const std::lock_guard lock(mutex_);
    std::string taken = file_ ? file_->read(file_size_) : std::string();
    taken += lines_;
    lines_ = {};
    file_.reset();
    file_size_ = 0;
    return taken;
}

} // namespace vell::plugin
