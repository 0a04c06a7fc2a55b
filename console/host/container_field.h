// A container field of the window's layout, with the picture that is in it.
#pragma once

#include <windows.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vell::console {

class ContainerField {
  public:
    ContainerField();
    ~ContainerField();
    ContainerField(const ContainerField&) = delete;
    ContainerField& operator=(const ContainerField&) = delete;

    // Takes any picture that GDI+ reads. False where it is none; what was there stays then.
    bool set(std::span<const std::byte> bytes, std::u16string_view name);

    // Draws the picture in the middle, never larger than it is, and its name and size below;
    // nothing before there is one.
    void paint(HDC context, const RECT& bounds) const;

  private:
    struct Picture;
    std::unique_ptr<Picture> picture_;
};

} // namespace vell::console
