// A window as the host shows one for a solution: a frame of the host's class with the document's
// window in it. Its answers to Get( … ) and its inner windows follow the host's version.
#pragma once

#include "console/host/container_field.h"
#include "console/host/plugin_host.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace vell::console {

class HostWindow {
  public:
    // Units of the host, of which a scaled display has more or fewer pixels.
    static constexpr std::int32_t content_width = 640;
    static constexpr std::int32_t content_height = 400;

    // Shows the window and brings it to the front. One may exist at a time.
    explicit HostWindow(const PluginHostOptions& host, std::int32_t scale_percent = 100);
    ~HostWindow();
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    static const HostWindow* current(); // null when there is none

    // False where there is no display, and when the user has closed it.
    bool is_open() const { return IsWindow(frame_); }
    HWND frame() const { return frame_; }
    HWND document() const { return document_; } // the window that takes drops

    // Shows a picture in a container field, as large as it is or as the field, with its name below.
    // False where the bytes are no picture that can be shown.
    bool show_picture(std::span<const std::byte> bytes, std::u16string_view name);

    void paint_layout(HDC context) const;

    static std::u16string name() { return u"Solution"; }
    static std::u16string host_name(); // of this computer

  private:
    void add_framed_document(); // of a host below version 16
    void add_document();

    std::wstring frame_class_;
    HWND frame_ = nullptr;
    HWND document_ = nullptr;
    std::int32_t scale_percent_;
    ContainerField container_field_;
};

// Handles all messages that wait.
void pump_window_messages();

} // namespace vell::console
