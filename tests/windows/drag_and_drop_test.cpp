// Drops on windows as the host shows them, dragged by the system's own drag loop where a display is
// there, and handed to the drop target where the amount or the moment matters.
#include "console/host/host_window.h"
#include "console/host/session.h"
#include "src/base/bytes.h"
#include "src/dragdrop/win32_drop_data.h"
#include "tests/windows/plugin_fixture.h"

#include <ole2.h>
#include <shlobj.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <optional>

namespace vell::test {
namespace {

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
constexpr DWORD every_effect = DROPEFFECT_COPY | DROPEFFECT_MOVE | DROPEFFECT_LINK;
constexpr const wchar_t* no_display = L"no display";

std::vector<std::wstring> lines_of(const std::u16string& list) {
    std::wstring rest = to_wide(list) + L'\r';
    std::vector<std::wstring> lines;
    for (std::size_t end; (end = rest.find(L'\r')) != rest.npos; rest.erase(0, end + 1))
        lines.push_back(rest.substr(0, end));
    return lines;
}

// Folders of drops in the system's temporary folder.
std::size_t written_folders() {
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

TEST_F(DragAndDrop, MouseFindsZonesAtEveryScaleAndHost) {
    const TemporaryFolder folder;
    const std::u16string file = folder.file(L"a.txt", "");
    const std::u16string parent = to_utf16(folder.path());
    DataObject data;
    data.add_files({file, parent.substr(0, parent.size() - 1)});
    struct Case {
        const char16_t* version;
        std::int16_t api_version;
        std::int32_t scale;
        POINT inside; // of the corner of the zone, and the first points beyond it
        POINT beyond;
    };
    for (const Case& c : {Case{u"Pro 19.5.1", 67, 100, {40, 60}, {300, 180}},
                          Case{u"Pro 19.5.1", 67, 150, {60, 90}, {450, 270}},
                          Case{u"Pro 15.0.3", 56, 100, {40, 60}, {300, 180}}}) {
        SCOPED_TRACE(c.scale + c.api_version * 1000);
        if (!open({.api_version = c.api_version, .version_text = c.version}, c.scale))
            GTEST_SKIP() << no_display;
        ASSERT_EQ(add(u"40 60 300 180"), u"0");
        const POINT points[] = {
            {c.inside.x - 1, c.inside.y},     c.inside, {c.beyond.x, c.beyond.y - 1},
            {c.beyond.x - 1, c.beyond.y - 1}, {5, 5},   {c.inside.x + 9, c.inside.y + 9},
        };
        const std::vector<DWORD> effects{0, 4, 0, 4, 0, 4};
        std::vector<POINT> path;
        for (const POINT& point : points)
            path.push_back(on_screen(point));
        // The upper edge of the zone has one colour, but for the frame.
        const auto shows_frame = [&] {
            const HDC screen = GetDC(nullptr);
            bool changed = false;
            for (LONG x = 20; x < 40; ++x)
                changed |= GetPixel(screen, path[1].x + x, path[1].y) !=
                           GetPixel(screen, path[1].x + x + 1, path[1].y);
            ReleaseDC(nullptr, screen);
            return changed;
        };
        MovingSource source(path,
                            [&](std::size_t at) { return shows_frame() == (effects[at] != 0); });
        DWORD effect = 0;
        EXPECT_EQ(DoDragDrop(&data, &source, every_effect, &effect), DRAGDROP_S_DROP);
        EXPECT_EQ(source.effects, effects);
        EXPECT_EQ(effect, DWORD{DROPEFFECT_LINK});
        for (int i = 0; shows_frame() && i < 1000; ++i, Sleep(10))
            console::pump_window_messages();
        EXPECT_FALSE(shows_frame());
        const auto requests = host().take_script_requests();
        ASSERT_EQ(requests.size(), 1u);
        EXPECT_EQ(requests[0].file_name, u"Solution");
        EXPECT_EQ(requests[0].script_name, u"Dropped");
        EXPECT_EQ(requests[0].control, 3);
        EXPECT_EQ(requests[0].parameter.as_text(), file + u"\r" + parent);
    }
}

TEST_F(DragAndDrop, EffectsFollowTheCursorAndTheSource) {
    if (!open())
        GTEST_SKIP() << no_display;
    DataObject data;
    data.add_files({u"C:\\1"});
    add();
    EXPECT_EQ(drop(data), DWORD{DROPEFFECT_LINK});
    EXPECT_EQ(drop(data, {50, 70}, DROPEFFECT_COPY | DROPEFFECT_MOVE), DWORD{DROPEFFECT_COPY});
    EXPECT_EQ(drop(data, {50, 70}, DROPEFFECT_MOVE), DWORD{DROPEFFECT_NONE});
    IDropTarget* const held = target();
    held->AddRef();
    EXPECT_EQ(call_id(7309, {u""}), u"0");
    EXPECT_EQ(target(), nullptr);
    EXPECT_EQ(held->Release(), 0u); // the test was the last to hold it
    EXPECT_EQ(call_id(7298, {u"", u"Solution", u"Step", u"", number(1)}), u"0");
    EXPECT_EQ(drop(data), DWORD{DROPEFFECT_COPY});
    DataObject nothing;
    EXPECT_EQ(drop(nothing), DWORD{DROPEFFECT_NONE});
    EXPECT_EQ(parameters(), (Texts{u"C:\\1", u"C:\\1", u"C:\\1"}));
}

TEST_F(DragAndDrop, ManyLongPathsWaitForTheHostWhole) {
    if (!open())
        GTEST_SKIP() << no_display;
    Texts paths;
    std::u16string expected;
    for (int i = 0; i < 10'000; ++i) {
        paths.push_back(u"C:\\" + std::u16string(400, u'\u00FC') + to_utf16(std::to_wstring(i)));
        expected += (i == 0 ? u"" : u"\r") + paths.back();
    }
    DataObject many;
    many.add_files(paths);
    DataObject one;
    one.add_files({u"C:\\2"});
    add();
    host().set_unsafe(true);
    host().idle(0);
    drop(many);
    drop(one);
    host().idle(0);
    EXPECT_EQ(parameters(), Texts{});
    host().set_unsafe(false);
    host().idle(4);
    EXPECT_EQ(parameters(), Texts{});
    host().idle(3);
    EXPECT_TRUE(parameters() == Texts{expected}); // too long to be printed
    host().idle(0);
    EXPECT_EQ(parameters(), Texts{u"C:\\2"});
}

TEST_F(DragAndDrop, AnEarlierTargetGetsWhatNoZoneTakesAndTheWindowBack) {
    if (!open())
        GTEST_SKIP() << no_display;
    OtherTarget other;
    ASSERT_EQ(RegisterDragDrop(window->document(), &other), S_OK);
    add(u"40 60 300 180");
    add(u"40 200 300 220");
    DataObject data;
    data.add_files({u"C:\\1"});
    EXPECT_EQ(drop(data), DWORD{DROPEFFECT_LINK});
    EXPECT_EQ(other.calls, "");
    EXPECT_EQ(drop(data, {5, 5}), DWORD{DROPEFFECT_MOVE});
    EXPECT_EQ(std::exchange(other.calls, ""), "ed");
    enter(data, {5, 5});
    over({6, 5});
    EXPECT_EQ(over({50, 70}), DWORD{DROPEFFECT_LINK});
    over({5, 5});
    target()->DragLeave();
    EXPECT_EQ(std::exchange(other.calls, ""), "eolel");

    call(u"VlFile_DragAndDrop", {u"-StopDragAndDrop", u"", u""});
    EXPECT_EQ(target(), &other);
    EXPECT_EQ(parameters(), Texts{u"C:\\1"});
    RevokeDragDrop(window->document());
    // Older hosts lose theirs.
    ASSERT_TRUE(open({.api_version = 52, .version_text = u"Pro 11.0"}));
    ASSERT_EQ(RegisterDragDrop(window->document(), &other), S_OK);
    EXPECT_EQ(add(), u"0");
    EXPECT_EQ(other.references, 1u);
}

TEST_F(DragAndDrop, ClosedWindowsAndShutdownLeaveNothing) {
    const bool has_display = open({.application_type = 6});
    EXPECT_EQ(add(), u"$$-5600"); // nobody drags anything there
    window.reset();
    start();
    EXPECT_EQ(call(u"VlFile_DragAndDrop", {u"-AddDragAndDropHandler", u"Solution", u"S"}),
              u"$$-5600");
    if (!has_display || !open())
        GTEST_SKIP() << no_display;
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(add(), u"0");
    EXPECT_EQ(add(), u"$$-4223");
    window.reset();
    host().idle();
    EXPECT_EQ(add(), u"$$-5600"); // not the seventh: six went with their window
    window.emplace(PluginHostOptions());
    EXPECT_EQ(add(), u"0");
    host().shut_down();
    EXPECT_EQ(target(), nullptr);
}

TEST_F(DragAndDrop, MailBecomesFilesUntilShutdown) {
    if (!open())
        GTEST_SKIP() << no_display;
    const wchar_t* const names[] = {L"Re_ .._offer.eml", L"note.txt", L"mail.msg"};
    DataObject data;
    data.add_mail({{u"Re: ..\\offer.eml", TYMED_ISTREAM, "stream"},
                   {u"note.txt", TYMED_HGLOBAL, "memory"},
                   {u"mail.msg", TYMED_ISTORAGE, ""}});
    add();
    EXPECT_EQ(drop(data), DWORD{DROPEFFECT_NONE});
    add(u"", u"-AllowMailDrops");
    EXPECT_EQ(drop(data), DWORD{DROPEFFECT_LINK});
    const Texts lists = parameters();
    ASSERT_EQ(lists.size(), 1u);
    const std::vector<std::wstring> paths = lines_of(lists[0]);
    ASSERT_EQ(paths.size(), std::size(names));
    const std::wstring folder = paths[0].substr(0, paths[0].rfind(L'\\'));
    for (std::size_t i = 0; i < paths.size(); ++i)
        EXPECT_EQ(paths[i], folder + L'\\' + names[i]);
    EXPECT_EQ(read_file(paths[0]), "stream");
    EXPECT_EQ(read_file(paths[1]), "memory");
    EXPECT_EQ(StgIsStorageFile(paths[2].c_str()), S_OK);
    host().shut_down();
    EXPECT_EQ(GetFileAttributesW(folder.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(DragAndDrop, MailThatComesInDuringAnotherLosesNothing) {
    if (!open())
        GTEST_SKIP() << no_display;
    add(u"", u"-AllowMailDrops");
    const std::size_t folders_before = written_folders();
    const CLIPFORMAT contents =
        static_cast<CLIPFORMAT>(RegisterClipboardFormatW(CFSTR_FILECONTENTS));
    DataObject inner;
    inner.add_mail({{u"inner.eml", TYMED_HGLOBAL, "inner"}});
    DataObject outer;
    outer.add_mail({{u"a.eml", TYMED_HGLOBAL, "outer a"}, {u"b.eml", TYMED_ISTREAM, "outer b"}});
    int nested = 3;
    outer.asked = [&](CLIPFORMAT format) {
        for (; format == contents && nested > 0; --nested)
            drop(inner);
    };
    EXPECT_EQ(drop(outer), DWORD{DROPEFFECT_LINK});
    const Texts lists = parameters();
    ASSERT_EQ(lists.size(), 4u);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(read_file(to_wide(lists[i])), "inner");
    const std::vector<std::wstring> paths = lines_of(lists[3]);
    ASSERT_EQ(paths.size(), 2u);
    EXPECT_EQ(read_file(paths[0]), "outer a");
    EXPECT_EQ(read_file(paths[1]), "outer b");
    // The plug-in ends while it reads.
    nested = 1;
    outer.asked = [&](CLIPFORMAT format) {
        for (; format == contents && nested > 0; --nested)
            host().shut_down();
    };
    EXPECT_EQ(drop(outer), DWORD{DROPEFFECT_NONE});
    EXPECT_EQ(parameters(), Texts{});
    EXPECT_EQ(written_folders(), folders_before);
}

TEST(WrittenFiles, AreBoundInNumberAndSum) {
    OleInitialize(nullptr);
    const std::size_t folders_before = written_folders();
    {
        dragdrop::WrittenFiles written(dragdrop::DropLimits{.items = 3, .bytes = 5'100});
        const auto count_of = [&](const std::vector<MailItem>& items) {
            DataObject data;
            data.add_mail(items);
            return written.write(data).size();
        };
        const MailItem stream{u"a", TYMED_ISTREAM, std::string(2'500, 'x')};
        const MailItem memory{u"b", TYMED_HGLOBAL, std::string(2'500, 'x')};
        const MailItem small{u"c", TYMED_HGLOBAL, std::string(600, 'x')};
        const MailItem storage{u"d", TYMED_ISTORAGE, ""}; // some hundred bytes at least
        EXPECT_EQ(count_of({stream, memory}), 2u);
        EXPECT_EQ(count_of({small, small, small}), 3u);
        EXPECT_EQ(written_folders(), folders_before + 2);
        EXPECT_EQ(count_of({small, small, small, small}), 0u);
        EXPECT_EQ(count_of({stream, memory, small}), 0u);
        EXPECT_EQ(count_of({small, memory, stream}), 0u);
        EXPECT_EQ(count_of({stream, memory, storage}), 0u);
        EXPECT_EQ(written_folders(), folders_before + 2);
    }
    EXPECT_EQ(written_folders(), folders_before);
    OleUninitialize();
}

TEST_F(DragAndDrop, ADragMayEndWhileItsSourceAnswers) {
    if (!open())
        GTEST_SKIP() << no_display;
    OtherTarget other;
    ASSERT_EQ(RegisterDragDrop(window->document(), &other), S_OK);
    add(u"40 60 300 180");
    const auto once = [](auto work) {
        return [work, done = false](CLIPFORMAT) mutable {
            if (!std::exchange(done, true))
                work();
        };
    };
    const auto leave = [&] {
        target()->DragLeave();
    };
    DataObject data;
    data.add_files({u"C:\\1"});
    data.asked = once(leave);
    EXPECT_EQ(enter(data, {5, 5}), DWORD{DROPEFFECT_NONE});
    EXPECT_EQ(over({5, 5}), DWORD{DROPEFFECT_NONE}); // without a drag
    EXPECT_EQ(other.calls, "");

    DataObject dropped; // another object than the one that has entered
    dropped.add_files({u"C:\\2"});
    const auto drop_other = [&](POINT point, auto meanwhile) {
        enter(data, point);
        dropped.asked = once(meanwhile);
        const POINT screen = on_screen(point);
        DWORD effect = every_effect;
        target()->Drop(&dropped, 0, {screen.x, screen.y}, &effect);
        return effect;
    };
    EXPECT_EQ(drop_other({50, 70}, leave), DWORD{DROPEFFECT_LINK});
    EXPECT_EQ(parameters(), Texts{u"C:\\2"});
    EXPECT_EQ(drop_other({5, 5}, leave), DWORD{DROPEFFECT_MOVE});
    EXPECT_EQ(std::exchange(other.calls, ""), "eled"); // entered anew by what is dropped
    IDropTarget* const held = target();
    held->AddRef();
    EXPECT_EQ(drop_other({50, 70}, [&] { call_id(7309, {u""}); }), DWORD{DROPEFFECT_MOVE});
    EXPECT_EQ(other.calls, "ed");
    EXPECT_EQ(held->Release(), 0u);
    EXPECT_EQ(parameters(), Texts{});
    RevokeDragDrop(window->document());
}

TEST_F(DragAndDrop, TheHostMayTakeItsWindowBack) {
    if (!open())
        GTEST_SKIP() << no_display;
    DataObject data;
    data.add_files({u"C:\\1"});
    OtherTarget own;
    const HWND document = window->document();
    ASSERT_EQ(RegisterDragDrop(document, &own), S_OK);
    add(u"40 60 300 180");
    RevokeDragDrop(document);
    ASSERT_EQ(RegisterDragDrop(document, &own), S_OK);
    EXPECT_EQ(add(u"40 60 300 180"), u"0");
    EXPECT_EQ(drop(data), DWORD{DROPEFFECT_LINK});
    EXPECT_EQ(drop(data, {5, 5}), DWORD{DROPEFFECT_MOVE});
    EXPECT_EQ(own.calls, "ed");
    EXPECT_EQ(parameters(), Texts{u"C:\\1"});
    call_id(7309, {u""});
    EXPECT_EQ(target(), &own);
    RevokeDragDrop(document);

    // An owner that destroys its target: taken off before, or with the window.
    UncountedTarget first;
    ASSERT_EQ(RegisterDragDrop(document, first.get()), S_OK);
    add();
    RevokeDragDrop(document);
    first.destroy();
    EXPECT_EQ(add(), u"0");
    ASSERT_NE(target(), nullptr);
    EXPECT_EQ(drop(data), DWORD{DROPEFFECT_LINK});
    call_id(7309, {u""});

    UncountedTarget second;
    ASSERT_EQ(RegisterDragDrop(document, second.get()), S_OK);
    add(u"40 60 300 180");
    enter(data, {5, 5});
    EXPECT_EQ(second.get()->calls, "e");
    IDropTarget* const held = target();
    held->AddRef();
    RevokeDragDrop(document); // as its owner does, for whom it is its own
    window.reset();
    second.destroy();
    EXPECT_EQ(held->DragLeave(), S_OK);
    host().idle();
    held->Release();
}

} // namespace
} // namespace vell::test
