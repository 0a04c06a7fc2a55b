// The units of a text. Long ones are shared by copies until one of them changes: a text on its way
// into a Data is copied at least once, and a text may be as long as a file.
#pragma once

#include <memory>
#include <string>
#include <utility>

namespace vell::console {

class TextUnits {
  public:
    TextUnits() = default;
    TextUnits(std::u16string units) { set(std::move(units)); }

    const std::u16string& get() const { return shared_ ? *shared_ : own_; }

    void set(std::u16string units) {
        shared_.reset();
        own_ = std::move(units);
        share_if_long();
    }

    // Calls `change` with a string that no other text shares.
    template <typename Change>
    void change(Change&& change) {
        if (shared_ && shared_.use_count() != 1)
            shared_ = std::make_shared<std::u16string>(*shared_);
        change(shared_ ? *shared_ : own_);
        share_if_long();
    }

  private:
    static constexpr std::size_t long_size = 0x8000;

    // Done when the units change and not when they are copied: a text that several threads read is
    // never touched.
    void share_if_long() {
        if (!shared_ && own_.size() >= long_size)
            shared_ = std::make_shared<std::u16string>(std::exchange(own_, {}));
    }

    std::u16string own_;
    std::shared_ptr<std::u16string> shared_; // instead of own_
};

} // namespace vell::console
