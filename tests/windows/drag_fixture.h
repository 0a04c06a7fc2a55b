// What is dragged, what it meets, and the fixture of the tests on drops. Windows only.
#pragma once

#include "console/host/host_window.h"
#include "console/host/session.h"
#include "src/base/bytes.h"
#include "src/windows/dragdrop/drop_data.h"
#include "tests/windows/plugin_fixture.h"

#include <ole2.h>
#include <shlobj.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <optional>

namespace vell::test {

using console::HostWindow;
using console::ScriptRequest;

// A COM object for the life of a variable: whoever took a reference has to have given it back.
template <typename Interface>
class LocalObject : public Interface {
  public:
    LocalObject() = default;
    LocalObject(const LocalObject&) = delete;
    LocalObject& operator=(const LocalObject&) = delete;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** object) override {
        const bool known = wanted == IID_IUnknown || wanted == __uuidof(Interface);
        *object = known ? this : nullptr;
        return known ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    ULONG references = 1;

  protected:
    ~LocalObject() { EXPECT_EQ(references, 1u); }
};

// Contents without a file, as mail programs hand them over.
struct MailItem {
    std::u16string name;
    DWORD medium;
    std::string bytes;
};

class DataObject final : public LocalObject<IDataObject> {
  public:
    // What happens before an answer: a source's answer takes time, in which messages come in.
    std::function<void(CLIPFORMAT)> asked = [](CLIPFORMAT) {
    };

    void add(UINT format, std::string bytes, DWORD medium = TYMED_HGLOBAL, LONG index = -1) {
        parts_.push_back({static_cast<CLIPFORMAT>(format), medium, index, std::move(bytes)});
    }
    void add_files(const std::vector<std::u16string>& paths) {
        std::string bytes(sizeof(DROPFILES), '\0');
        bytes[0] = sizeof(DROPFILES);
        bytes[16] = 1;
        for (const std::u16string& path : paths)
            bytes.append(reinterpret_cast<const char*>(path.c_str()), path.size() * 2 + 2);
        add(CF_HDROP, bytes.append(2, '\0'));
    }
    void add_mail(const std::vector<MailItem>& items) {
        const auto count = static_cast<std::uint32_t>(items.size());
        std::string descriptors(reinterpret_cast<const char*>(&count), sizeof count);
        for (LONG i = 0; const MailItem& item : items) {
            FILEDESCRIPTORW descriptor{};
            std::ranges::copy(item.name, descriptor.cFileName);
            descriptors.append(reinterpret_cast<const char*>(&descriptor), sizeof descriptor);
            add(RegisterClipboardFormatW(CFSTR_FILECONTENTS), item.bytes, item.medium, i++);
        }
        add(RegisterClipboardFormatW(CFSTR_FILEDESCRIPTORW), descriptors);
    }

    HRESULT STDMETHODCALLTYPE GetData(FORMATETC* format, STGMEDIUM* medium) override {
        asked(format->cfFormat);
        const Part* part = find(*format);
        if (!part)
            return DV_E_FORMATETC;
        *medium = {};
        medium->tymed = part->medium;
        if (part->medium == TYMED_ISTORAGE)
            return StgCreateDocfile(nullptr,
                                    STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_DELETEONRELEASE, 0,
                                    &medium->pstg);
        const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, part->bytes.size());
        std::ranges::copy(part->bytes, static_cast<char*>(GlobalLock(memory)));
        GlobalUnlock(memory);
        if (part->medium == TYMED_ISTREAM)
            return CreateStreamOnHGlobal(memory, TRUE, &medium->pstm);
        medium->hGlobal = memory;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE QueryGetData(FORMATETC* format) override {
        asked(format->cfFormat);
        return find(*format) ? S_OK : DV_E_FORMATETC;
    }
    HRESULT STDMETHODCALLTYPE GetDataHere(FORMATETC*, STGMEDIUM*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetCanonicalFormatEtc(FORMATETC*, FORMATETC*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetData(FORMATETC*, STGMEDIUM*, BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumFormatEtc(DWORD, IEnumFORMATETC**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DAdvise(FORMATETC*, DWORD, IAdviseSink*, DWORD*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE DUnadvise(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumDAdvise(IEnumSTATDATA**) override { return E_NOTIMPL; }

  private:
    struct Part {
        CLIPFORMAT format;
        DWORD medium;
        LONG index;
        std::string bytes;
    };
    const Part* find(const FORMATETC& wanted) const {
        const auto found = std::ranges::find_if(parts_, [&](const Part& part) {
            return part.format == wanted.cfFormat && part.index == wanted.lindex &&
                   (part.medium & wanted.tymed) != 0;
        });
        return found == parts_.end() ? nullptr : &*found;
    }
    std::vector<Part> parts_;
};

// Moves the mouse from point to point and drops at the last. It goes on when `seen` says that the
// screen shows what it should at a point, and when that takes too long.
class MovingSource final : public LocalObject<IDropSource> {
  public:
    MovingSource(std::vector<POINT> points, std::function<bool(std::size_t)> seen)
        : points_(std::move(points)), seen_(std::move(seen)) {
        go_on();
    }
    HRESULT STDMETHODCALLTYPE QueryContinueDrag(BOOL, DWORD) override {
        constexpr int most = 20'000; // the drag loop asks every few milliseconds
        if (++asked_ > most)
            return DRAGDROP_S_CANCEL;
        return effects.size() == points_.size() ? DRAGDROP_S_DROP : S_OK;
    }
    HRESULT STDMETHODCALLTYPE GiveFeedback(DWORD effect) override {
        constexpr int least = 3; // the first answer may be about where the mouse was before
        constexpr int most = 500;
        const std::size_t at = effects.size();
        if (at < points_.size() && ++answers_ >= least && (seen_(at) || answers_ > most)) {
            EXPECT_LE(answers_, most) << "at point " << at;
            effects.push_back(effect);
            go_on();
        }
        return DRAGDROP_S_USEDEFAULTCURSORS;
    }

    std::vector<DWORD> effects; // at each point

  private:
    void go_on() {
        answers_ = 0;
        if (effects.size() == points_.size())
            return;
        SetCursorPos(points_[effects.size()].x, points_[effects.size()].y);
        INPUT input{};
        input.type = INPUT_MOUSE;
        input.mi.dwFlags = MOUSEEVENTF_MOVE;
        SendInput(1, &input, sizeof input);
    }

    std::vector<POINT> points_;
    std::function<bool(std::size_t)> seen_;
    int asked_ = 0;
    int answers_ = 0;
};

// Another program's target, as far as our own can tell.
class OtherTarget final : public LocalObject<IDropTarget> {
  public:
    HRESULT STDMETHODCALLTYPE DragEnter(IDataObject* data, DWORD, POINTL, DWORD* effect) override {
        EXPECT_NE(data, nullptr);
        return noted('e', effect);
    }
    HRESULT STDMETHODCALLTYPE DragOver(DWORD, POINTL, DWORD* effect) override {
        return noted('o', effect);
    }
    HRESULT STDMETHODCALLTYPE DragLeave() override {
        calls += 'l';
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Drop(IDataObject*, DWORD, POINTL, DWORD* effect) override {
        return noted('d', effect);
    }
    std::string calls;

  private:
    HRESULT noted(char call, DWORD* effect) {
        calls += call;
        *effect = DROPEFFECT_MOVE;
        return S_OK;
    }
};

// A target whose owner counts no references: who touches it once it is destroyed faults.
class UncountedTarget {
  public:
    OtherTarget* get() const { return target_; }
    void destroy() {
        DWORD before = 0;
        VirtualProtect(target_, sizeof *target_, PAGE_NOACCESS, &before);
    }

  private:
    OtherTarget* const target_ =
        new (VirtualAlloc(nullptr, sizeof(OtherTarget), MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE))
            OtherTarget;
};

using Texts = std::vector<std::u16string>;
inline constexpr DWORD every_effect = DROPEFFECT_COPY | DROPEFFECT_MOVE | DROPEFFECT_LINK;
inline constexpr const wchar_t* no_display = L"no display";

inline std::vector<std::wstring> paths_in(const std::u16string& list) {
    std::vector<std::wstring> paths;
    for (const std::u16string& line : lines_of(list))
        paths.push_back(to_wide(line));
    return paths;
}

// Folders of drops in the system's temporary folder.
inline std::size_t written_folders() {
    const std::filesystem::directory_iterator all(std::filesystem::temp_directory_path());
    return static_cast<std::size_t>(std::count_if(begin(all), end(all), [](const auto& entry) {
        return entry.path().filename().wstring().starts_with(L"VELLTEMP") && entry.is_directory();
    }));
}

class DragAndDrop : public Plugin {
  protected:
    DragAndDrop() { OleInitialize(nullptr); }
    ~DragAndDrop() override {
        session_.reset();
        if (host_started_)
            host().shut_down();
        window.reset();
        OleUninitialize();
    }

    // False where there is no display.
    bool open(PluginHostOptions options = {}, std::int32_t scale = 100) {
        session_.reset();
        window.reset();
        start(options);
        host_started_ = true;
        session_.emplace(host());
        window.emplace(options, scale);
        return window->is_open();
    }
    std::u16string add(std::u16string bounds = u"", std::u16string switches = u"") {
        return call(u"VlFile_DragAndDrop",
                    {u"-AddDragAndDropHandler " + switches, u"Solution", u"Dropped", bounds});
    }
    POINT on_screen(POINT point) const {
        ClientToScreen(window->document(), &point);
        return point;
    }
    IDropTarget* target() const {
        return static_cast<IDropTarget*>(GetPropW(window->document(), L"OleDropTargetInterface"));
    }
    // Enters, moves to and drops at a point of the document, without a mouse; the effect.
    DWORD enter(IDataObject& data, POINT point, DWORD effect = every_effect) {
        const POINT screen = on_screen(point);
        target()->DragEnter(&data, MK_LBUTTON, {screen.x, screen.y}, &effect);
        return effect;
    }
    DWORD over(POINT point, DWORD effect = every_effect) {
        const POINT screen = on_screen(point);
        target()->DragOver(MK_LBUTTON, {screen.x, screen.y}, &effect);
        return effect;
    }
    DWORD drop(IDataObject& data, POINT point = {50, 70}, DWORD effect = every_effect) {
        enter(data, point, effect);
        const POINT screen = on_screen(point);
        target()->Drop(&data, 0, {screen.x, screen.y}, &effect);
        return effect;
    }
    Texts parameters() {
        Texts texts;
        for (const ScriptRequest& request : host().take_script_requests())
            texts.push_back(request.parameter.as_text());
        return texts;
    }

    std::optional<HostWindow> window;

  private:
    std::optional<console::Session> session_;
    bool host_started_ = false;
};

} // namespace vell::test
