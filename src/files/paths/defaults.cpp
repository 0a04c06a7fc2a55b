#include "src/files/paths/defaults.h"

namespace vell::files {

using params::Call;

std::optional<NativePath> Defaults::file() const {
    const std::lock_guard lock(mutex_);
    return file_;
}

void Defaults::set_file(NativePath path) {
    const std::lock_guard lock(mutex_);
    file_ = std::move(path);
}

void Defaults::release_file() {
    const std::lock_guard lock(mutex_);
    file_.reset();
}

std::u16string Defaults::type() const {
    const std::lock_guard lock(mutex_);
    return type_;
}

void Defaults::set_type(std::u16string_view type) {
    std::u16string kept(type.substr(0, longest_type));
    const std::lock_guard lock(mutex_);
    type_ = std::move(kept);
}

void Defaults::reset() {
    const std::lock_guard lock(mutex_);
    file_.reset();
    type_.clear();
}

Defaults& defaults() {
    static Defaults process_defaults;
    return process_defaults;
}

Result<void> set_default_file(Call& call, System&) {
    defaults().release_file();
    defaults().set_file(VELL_TRY(call.path(1)));
    call.set_done();
    return {};
}

Result<void> set_default_type(Call& call, System&) {
    defaults().set_type(call.text(1));
    call.set_done();
    return {};
}

Result<void> set_default_creator(Call& call, System&) {
    call.set_done();
    return {};
}

} // namespace vell::files
