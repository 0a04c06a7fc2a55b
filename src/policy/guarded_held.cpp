#include "src/policy/guarded_held.h"

#include "src/policy/limited.h"

namespace vell::policy {
namespace {

using files::HeldFile;
using files::HeldItem;
using files::ItemKind;

class LimitedHeldFile : public LimitedFile<HeldFile> {
  public:
    using LimitedFile<HeldFile>::LimitedFile;

    Result<void> set_times(const files::NewTimes& times) override {
        return file().set_times(times);
    }
};

class GuardedHeldItem : public HeldItem {
  public:
    GuardedHeldItem(std::unique_ptr<HeldItem> item, std::u16string path, PathGuard& guard)
        : item_(std::move(item)), path_(std::move(path)), guard_(guard) {}

    ItemKind kind() const override { return item_->kind(); }
    bool is_link() const override { return item_->is_link(); }

    Result<std::unique_ptr<HeldItem>> hold(std::u16string_view name) override {
        VELL_TRY(check(name, Access::Read));
        return guarded(VELL_TRY(item_->hold(name)), path_of(name), guard_);
    }
    Result<std::unique_ptr<HeldItem>> make_folder(std::u16string_view name) override {
        VELL_TRY(check(name, Access::Write));
        return guarded(VELL_TRY(item_->make_folder(name)), path_of(name), guard_);
    }
    Result<std::unique_ptr<HeldFile>> open_new(std::u16string_view name) override {
        VELL_TRY(check(name, Access::Write));
        return limited(item_->open_new(name));
    }
    Result<std::unique_ptr<HeldFile>> open_emptied(std::u16string_view name) override {
        VELL_TRY(check(name, Access::Write));
        return limited(item_->open_emptied(name));
    }

  private:
    std::u16string path_of(std::u16string_view name) const {
        std::u16string path = path_;
        if (!path.ends_with(u'\\'))
            path += u'\\';
        return path.append(name);
    }
    Result<void> check(std::u16string_view name, Access access) {
        VELL_TRY(check_time());
        return guard_.check({path_of(name), std::nullopt}, access, LastLink::Itself);
    }
    static Result<std::unique_ptr<HeldFile>> limited(Result<std::unique_ptr<HeldFile>> opened) {
        return std::unique_ptr<HeldFile>(
            std::make_unique<LimitedHeldFile>(VELL_TRY(std::move(opened))));
    }

    std::unique_ptr<HeldItem> item_;
    std::u16string path_;
    PathGuard& guard_;
};

} // namespace

std::unique_ptr<HeldItem> guarded(std::unique_ptr<HeldItem> item, std::u16string path,
                                  PathGuard& guard) {
    return std::make_unique<GuardedHeldItem>(std::move(item), std::move(path), guard);
}

} // namespace vell::policy
