#include "console/host/host_window.h"

#include "console/host/wide_text.h"
#include "src/plugin/main_window.h"

#include <algorithm>
#include <stdexcept>

namespace vell::console {

namespace {

constexpr const wchar_t* document_class = L"Afx:00400000:8";
constexpr const wchar_t* framed_document_class = L"FMDocument";
constexpr std::int32_t first_without_frame = 16; // of the host's versions

HostWindow* current_window = nullptr;

// Fields of a layout, at which files can be dropped.
struct Field {
    const wchar_t* label;
    RECT bounds;
};
constexpr Field fields[] = {
    {L"Documents: 40 60 300 180", {40, 60, 300, 180}},
    {L"Photos: 340 60 600 180", {340, 60, 600, 180}},
};

constexpr RECT container_bounds{40, 196, 600, 392};

RECT scaled(RECT rect, LONG percent) {
    return {rect.left * percent / 100, rect.top * percent / 100, rect.right * percent / 100,
            rect.bottom * percent / 100};
}

void paint(HWND window) {
    PAINTSTRUCT paint;
    const HDC context = BeginPaint(window, &paint);
    if (const auto* shown =
            reinterpret_cast<const HostWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA)))
        shown->paint_layout(context);
    EndPaint(window, &paint);
}

LRESULT CALLBACK document_procedure(HWND window, UINT message, WPARAM wide, LPARAM argument) {
    if (message == WM_PAINT) {
        paint(window);
        return 0;
    }
    return DefWindowProcW(window, message, wide, argument);
}

LRESULT CALLBACK framed_procedure(HWND window, UINT message, WPARAM wide, LPARAM argument) {
    if (message == WM_PAINT) {
        paint(window);
        return 0;
    }
    return DefMDIChildProcW(window, message, wide, argument);
}

LRESULT CALLBACK frame_procedure(HWND window, UINT message, WPARAM wide, LPARAM argument) {
    const HWND document = GetWindow(window, GW_CHILD);
    if (message == WM_SIZE && document) {
        MoveWindow(document, 0, 0, LOWORD(argument), HIWORD(argument), TRUE);
        return 0;
    }
    return DefWindowProcW(window, message, wide, argument);
}

void register_class(const wchar_t* name, WNDPROC procedure) {
    WNDCLASSW window_class{};
    window_class.lpfnWndProc = procedure;
    window_class.hInstance = GetModuleHandleW(nullptr);
    window_class.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    window_class.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    window_class.lpszClassName = name;
    RegisterClassW(&window_class);
}

// The first number of a version text such as "Pro 19.5.1".
std::int32_t major_version(std::u16string_view text) {
    std::int32_t number = 0;
    const std::size_t first = std::min(text.find_first_of(u"0123456789"), text.size());
    for (const char16_t c : text.substr(first, 4)) {
        if (c < u'0' || c > u'9')
            break;
        number = number * 10 + (c - u'0');
    }
    return number;
}

std::wstring frame_class(std::int16_t api_version) {
    const std::u16string_view wanted = plugin::main_window_class(api_version);
    return wanted.empty() ? L"FMPRO12.0APP" : to_wide(wanted); // older ones are not looked for
}

} // namespace

HostWindow::HostWindow(const PluginHostOptions& host, std::int32_t scale_percent)
    : frame_class_(frame_class(host.api_version)), scale_percent_(scale_percent) {
    if (current_window)
        throw std::logic_error("one HostWindow at a time");
    register_class(frame_class_.c_str(), frame_procedure);
    register_class(document_class, document_procedure);
    register_class(framed_document_class, framed_procedure);
    const RECT content = scaled({0, 0, content_width, content_height}, scale_percent_);
    RECT outer = content;
    AdjustWindowRect(&outer, WS_OVERLAPPEDWINDOW, FALSE);
    frame_ = CreateWindowW(frame_class_.c_str(), as_wide(name()), WS_OVERLAPPEDWINDOW, 60, 60,
                           outer.right - outer.left, outer.bottom - outer.top, nullptr, nullptr,
                           GetModuleHandleW(nullptr), nullptr);
    current_window = this;
    if (!frame_)
        return;
    if (major_version(host.version_text) < first_without_frame)
        add_framed_document();
    else
        add_document();
    SetWindowLongPtrW(document_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    ShowWindow(frame_, SW_SHOW);
    SetForegroundWindow(frame_);
    UpdateWindow(document_);
    pump_window_messages();
}

HostWindow::~HostWindow() {
    if (is_open())
        DestroyWindow(frame_);
    UnregisterClassW(frame_class_.c_str(), GetModuleHandleW(nullptr));
    current_window = nullptr;
}

void HostWindow::paint_layout(HDC context) const {
    SetBkMode(context, TRANSPARENT);
    for (const Field& field : fields) {
        RECT rect = scaled(field.bounds, scale_percent_);
        FillRect(context, &rect, static_cast<HBRUSH>(GetStockObject(LTGRAY_BRUSH)));
        DrawTextW(context, field.label, -1, &rect, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    }
    container_field_.paint(context, scaled(container_bounds, scale_percent_));
}

bool HostWindow::show_picture(std::span<const std::byte> bytes, std::u16string_view name) {
    if (!container_field_.set(bytes, name))
        return false;
    InvalidateRect(document_, nullptr, TRUE);
    pump_window_messages();
    return true;
}

const HostWindow* HostWindow::current() {
    return current_window;
}

void HostWindow::add_document() {
    RECT client;
    GetClientRect(frame_, &client);
    document_ = CreateWindowW(document_class, L"", WS_CHILD | WS_VISIBLE, 0, 0, client.right,
                              client.bottom, frame_, nullptr, GetModuleHandleW(nullptr), nullptr);
}

void HostWindow::add_framed_document() {
    RECT client;
    GetClientRect(frame_, &client);
    CLIENTCREATESTRUCT create{nullptr, 1};
    const HWND documents = CreateWindowW(L"MDIClient", L"", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN,
                                         0, 0, client.right, client.bottom, frame_, nullptr,
                                         GetModuleHandleW(nullptr), &create);
    const std::u16string title = name() + u" (" + host_name() + u")";
    document_ = CreateMDIWindowW(framed_document_class, as_wide(title), 0, 0, 0, client.right,
                                 client.bottom, documents, GetModuleHandleW(nullptr), 0);
}

std::u16string HostWindow::host_name() {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1];
    DWORD length = MAX_COMPUTERNAME_LENGTH + 1;
    return GetComputerNameW(name, &length) ? to_utf16(name) : std::u16string();
}

void pump_window_messages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

} // namespace vell::console
