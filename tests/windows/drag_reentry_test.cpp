// Drops during which something else comes in: another drop, the end of the drag, the host taking
// its window back. And what a drop may bring at most.
#include "tests/windows/drag_fixture.h"

namespace vell::test {
namespace {

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
    const std::vector<std::wstring> paths = paths_in(lists[3]);
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
