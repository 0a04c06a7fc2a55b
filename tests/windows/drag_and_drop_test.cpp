// Drops on windows as the host shows them, dragged by the system's own drag loop where a display is
// there, and handed to the drop target where the amount or the moment matters.
#include "tests/windows/drag_fixture.h"

namespace vell::test {
namespace {

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
    const Texts paths(10'000, u"C:\\" + std::u16string(400, u'\u00FC'));
    DataObject many;
    many.add_files(paths);
    add();
    host().set_unsafe(true);
    host().idle(0);
    drop(many);
    host().idle(0);
    EXPECT_TRUE(parameters().empty());
    host().set_unsafe(false);
    host().idle(4);
    EXPECT_TRUE(parameters().empty());
    host().idle(3);
    const Texts lists = parameters();
    ASSERT_EQ(lists.size(), 1u);
    EXPECT_TRUE(lines_of(lists[0]) == paths); // too long to be printed
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
    EXPECT_EQ(add(), u"0");
    window.reset();
    host().idle();
    EXPECT_EQ(add(), u"$$-5600");
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
    const std::vector<std::wstring> paths = paths_in(lists[0]);
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

} // namespace
} // namespace vell::test
