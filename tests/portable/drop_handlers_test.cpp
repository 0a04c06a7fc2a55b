// Handlers and drops over windows and a host in memory.
#include "src/dragdrop/drag_and_drop.h"
#include "src/dragdrop/dropped_data.h"
#include "tests/portable/fake_call.h"
#include "tests/portable/fake_system.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>

namespace vell::test {
namespace {

using namespace dragdrop;
using Texts = std::vector<std::u16string>;

class FakeHost : public DropHost {
  public:
    std::int32_t version() const override { return version_number; }
    bool is_callable() const override { return callable; }
    Result<void> start(const Script& script, const std::u16string& parameter) override {
        started.push_back(script.file_name + u"/" + script.name + u"/" + parameter);
        if (meanwhile)
            std::exchange(meanwhile, nullptr)();
        return {};
    }
    void note(std::string_view) override {}

    std::int32_t version_number = 19'501;
    bool callable = true;
    Texts started;
    std::function<void()> meanwhile; // happens while the next script is being started
};

class FakeWindows : public DropWindows {
  public:
    Window titled_document(Window, const std::u16string& title) override {
        return title == framed_title ? front : nullptr;
    }
    Window document(Window) override { return front; }
    std::int32_t outer_width(Window) override { return width; }
    std::int32_t scroll_position(Window) override {
        if (meanwhile)
            std::exchange(meanwhile, nullptr)();
        return scrolled;
    }
    void bring_to_front(Window) override {}
    Result<void> serve(Window window, DropReceiver& drop_receiver, EarlierTarget target) override {
        receiver = &drop_receiver;
        earlier = target;
        served[window] = true;
        return {};
    }
    bool is_served(Window window) override { return served[window]; }
    void leave(Window window) override { served.erase(window); }
    void shut_down() override {}

    int windows[2] = {}; // their addresses are the handles
    Window front = &windows[0];
    std::u16string framed_title;
    std::int32_t width = 640;
    std::int32_t scrolled = 0;
    std::map<Window, bool> served; // to false when the window is closed
    DropReceiver* receiver = nullptr;
    EarlierTarget earlier = EarlierTarget::Keep;
    std::function<void()> meanwhile; // happens while the scroll bar answers
};

class Dropping : public ::testing::Test {
  protected:
    std::u16string add(std::u16string script, std::u16string bounds = u"",
                       const std::u16string& switches = u"", std::u16string file = u"Solution") {
        return call({u"-AddDragAndDropHandler " + switches, file, script, bounds});
    }
    std::u16string stop(std::u16string file, std::u16string script = u"") {
        return call({u"-StopDragAndDrop", file, script});
    }
    std::u16string call(Texts parameters) {
        FakeCall fake(std::move(parameters));
        for (const auto& [calculation, value] : calculations)
            fake.set_calculation(calculation, value);
        return result_of(fake);
    }
    std::u16string result_of(FakeCall& fake) {
        const Result<void> outcome = drops.drag_and_drop(fake);
        if (outcome)
            return *fake.result();
        const std::string code = std::to_string(number(outcome.error()));
        return {code.begin(), code.end()};
    }
    // What a drop on a window does: nothing when no handler takes it.
    void drop(Point point, Texts paths, Offer offer = {.files = true}) {
        if (const auto taker = windows.receiver->taker(windows.front, point, offer))
            windows.receiver->dropped(*taker, paths);
    }
    Texts started() { return std::exchange(host.started, {}); }

    FakeHost host;
    FakeWindows windows;
    FakeSystem files;
    DragAndDrop drops{host, windows, files};
    std::map<std::u16string, std::u16string> calculations;
};

TEST_F(Dropping, RefusesWhatCannotWork) {
    EXPECT_EQ(call({u"-AddDragAndDropHandler", u"Solution"}), u"-50");
    EXPECT_EQ(add(u""), u"-50");
    EXPECT_EQ(add(u"Script", u"", u"", u""), u"-50");
    EXPECT_EQ(add(u"Script", u"1 2 3"), u"-50");
    EXPECT_EQ(call({u"-CopyCursor", u"", u""}), u"0"); // neither adds nor stops
    EXPECT_TRUE(drops.handlers().empty());
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(add(u"Script"), u"0");
    EXPECT_EQ(add(u"Seventh"), u"-4223");
    windows.served[windows.front] = false; // closed windows do not count
    EXPECT_EQ(add(u"Seventh"), u"0");
    EXPECT_EQ(drops.handlers().size(), 1u);
}

TEST_F(Dropping, FollowsTheHostsVersion) {
    const Rectangle plain{10, 20, 110, 60};
    const Rectangle larger{15, 30, 165, 90};
    windows.width = 960;
    windows.framed_title = u"Solution - 2 (Server)";
    calculations = {{u"Get(WindowName)", u"Solution - 2"},
                    {u"Get(HostName)", u"Server"},
                    {u"Get(WindowContentWidth)", u"640"},
                    {u"Get(StatusAreaState)", u"1"}};
    const struct {
        std::int32_t version;
        EarlierTarget earlier;
        std::int32_t offset;
        Rectangle bounds;
    } cases[] = {
        {10'000, EarlierTarget::Revoke, -80, plain}, {11'999, EarlierTarget::Revoke, -80, plain},
        {12'000, EarlierTarget::Keep, 0, plain},     {14'999, EarlierTarget::Keep, 0, plain},
        {15'000, EarlierTarget::Keep, 0, larger},    {16'000, EarlierTarget::Keep, 0, larger}};
    for (const auto& [version, earlier, offset, bounds] : cases) {
        SCOPED_TRACE(version);
        host.version_number = version;
        ASSERT_EQ(add(u"Script", u"10 20 110 60"), u"0");
        const Handler& handler = drops.handlers().back();
        EXPECT_EQ(windows.earlier, earlier);
        EXPECT_EQ(handler.zone.vertical_offset, offset);
        EXPECT_EQ(handler.zone.bounds, bounds);
    }
    stop(u"");
    host.version_number = 11'000;
    calculations[u"Get(StatusAreaState)"] = u"3";
    add(u"Script");
    EXPECT_EQ(drops.handlers().back().zone.vertical_offset, 0);
    calculations.erase(u"Get(StatusAreaState)");
    add(u"Script");
    EXPECT_EQ(drops.handlers().back().zone.vertical_offset, -80);
    calculations[u"Get(HostName)"] = u"Another";
    EXPECT_EQ(add(u"Script"), u"-5600");
    calculations.erase(u"Get(HostName)");
    EXPECT_EQ(add(u"Script"), u"-5600");
}

TEST_F(Dropping, TheFirstZoneThatHoldsThePointTakesTheDrop) {
    FakeCall step({u"", u"Solution", u"Step", u"0 500 100 600", u"", u"", u""});
    step.set_step_option(4, 1);
    step.set_step_option(5, 0);
    step.set_step_option(6, 1);
    EXPECT_EQ(result_of(step), u"0");
    EXPECT_EQ(drops.handlers()[0].effect, Effect::Copy);
    EXPECT_FALSE(drops.handlers()[0].allows_mail);
    add(u"Left", u"0 0 100 100");
    add(u"Both", u"50 0 200 100");
    add(u"Mail", u"", u"-AllowMailDrops");
    drop({60, 10}, {u"C:\\a"});
    drop({150, 10}, {u"C:\\b", u"D:\\"});
    drop({60, 10}, {u"C:\\mail"}, {.mail = true});
    drop({60, 510}, {u"C:\\c"});
    windows.scrolled = 400;
    drop({60, 110}, {u"C:\\d"});
    windows.front = &windows.windows[1];
    drop({60, 10}, {u"C:\\other window"});
    EXPECT_EQ(started(),
              (Texts{u"Solution/Left/C:\\a", u"Solution/Both/C:\\b\rD:\\",
                     u"Solution/Mail/C:\\mail", u"Solution/Step/C:\\c", u"Solution/Step/C:\\d"}));
}

TEST_F(Dropping, HandlersMayComeAndGoWhileTheHostAnswers) {
    add(u"Scrolled", u"0 0 100 100", u"-ScrollDropZone");
    windows.meanwhile = [this] {
        for (int i = 0; i < 5; ++i)
            add(u"Later");
    };
    drop({10, 10}, {u"1"});
    windows.meanwhile = [this] {
        stop(u"");
    };
    drop({10, 10}, {u"2"});
    EXPECT_EQ(started(), Texts{u"Solution/Scrolled/1"});
    EXPECT_TRUE(drops.handlers().empty());
}

TEST_F(Dropping, WaitsForTheHostInTheOrderOfTheDrops) {
    add(u"One", u"0 0 100 100");
    add(u"Two");
    host.callable = false;
    drop({10, 10}, {u"1"});
    drop({200, 10}, {u"2"});
    drop({10, 10}, {u"3"});
    drops.idle();
    host.callable = true;
    drop({10, 10}, {u"4"}); // behind those that wait
    EXPECT_EQ(started(), Texts{});
    drops.idle();
    EXPECT_EQ(started(), Texts{u"Solution/One/1"});
    stop(u"Solution", u"Two"); // and what waits for it
    for (int i = 0; i < 3; ++i)
        drops.idle();
    EXPECT_EQ(started(), (Texts{u"Solution/One/3", u"Solution/One/4"}));

    host.meanwhile = [this] {
        drop({10, 10}, {u"during"});
        drops.idle();
        EXPECT_EQ(host.started.size(), 1u);
    };
    drop({10, 10}, {u"first"});
    EXPECT_EQ(started().size(), 1u);
    // The window's end does not take away what was dropped on it.
    windows.served[windows.front] = false;
    drops.idle();
    EXPECT_EQ(started(), Texts{u"Solution/One/during"});
    EXPECT_TRUE(drops.handlers().empty());
}

TEST_F(Dropping, StopsByFileAndScript) {
    const Window first = windows.front;
    add(u"A", u"", u"", u"One");
    add(u"B", u"", u"", u"One");
    windows.front = &windows.windows[1];
    add(u"A", u"", u"", u"Two");
    stop(u"one", u"b");
    EXPECT_EQ(drops.handlers().size(), 2u);
    stop(u"Two");
    EXPECT_EQ(drops.handlers().size(), 1u);
    EXPECT_TRUE(windows.served.contains(first) && !windows.served.contains(windows.front));
    stop(u"", u"no such script");
    EXPECT_TRUE(drops.handlers().empty() && windows.served.empty());
}

TEST(DroppedData, ListsOfPaths) {
    const NarrowDecoder decode = [](std::string_view bytes) {
        return std::u16string(bytes.begin(), bytes.end());
    };
    const std::string wide("\x14\0\0\0........\0\0\0\0\x01\0\0\0a\0\0\0\xFC\0b\0", 28);
    EXPECT_EQ(dropped_paths(wide, decode), (Texts{u"a", u"\u00FCb"}));
    EXPECT_EQ(dropped_paths(wide + std::string("\0\0\0\0c\0", 6), decode).size(), 2u);
    std::string narrow("\x18\0\0\0........\0\0\0\0\0\0\0\0....C:\\a\0C:\\bc", 34);
    EXPECT_EQ(dropped_paths(narrow, decode), (Texts{u"C:\\a", u"C:\\bc"}));
    narrow[0] = 100; // beyond the end
    EXPECT_TRUE(dropped_paths(narrow, decode).empty());
    EXPECT_TRUE(dropped_paths(narrow.substr(0, 19), decode).empty());
}

TEST(DroppedData, DescribedItemsAndTheirNames) {
    std::string bytes("\x03\0\0\0", 4); // one more than there are
    for (const char flags : {'\x40', '\x04'}) {
        std::string descriptor(592, '\0');
        descriptor[0] = flags;
        descriptor[36] = 0x10;
        descriptor[64] = 1;
        descriptor[68] = 2;
        descriptor[72] = 'n';
        bytes += descriptor;
    }
    const auto items = described_items(bytes);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].name, u"n");
    EXPECT_EQ(items[0].size, 0x100000002u);
    EXPECT_TRUE(!items[0].is_folder && items[1].is_folder && !items[1].size);

    FreshNames names;
    for (const auto& [wanted, name] :
         std::initializer_list<std::pair<std::u16string, std::u16string>>{
             {u"Re: offer.msg", u"Re_ offer.msg"},
             {u"re_ OFFER.msg", u"re_ OFFER (2).msg"},
             {u"..\\..\\x", u".._.._x"},
             {u" a. .", u"a"},
             {u"...", u"item"},
             {u"nul.txt", u"_nul.txt"},
             {std::u16string(300, u'x') + u".msg", std::u16string(116, u'x') + u".msg"},
             {std::u16string(119, u'y') + u"\U0001F600z", std::u16string(119, u'y')}})
        EXPECT_EQ(names.name_for(wanted), name);
}

} // namespace
} // namespace vell::test
