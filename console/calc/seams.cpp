#include "console/calc/seams.h"

#include "console/model/unicode.h"

namespace vell::console {

namespace {

constexpr GetItemName item_names[] = {
    {u"ApplicationArchitecture", GetItem::ApplicationArchitecture},
    {u"ApplicationVersion", GetItem::ApplicationVersion},
    {u"CurrentDate", GetItem::CurrentDate},
    {u"CurrentTime", GetItem::CurrentTime},
    {u"CurrentTimestamp", GetItem::CurrentTimestamp},
    {u"DesktopPath", GetItem::DesktopPath},
    {u"DocumentsPath", GetItem::DocumentsPath},
    {u"FilePath", GetItem::FilePath},
    {u"HostName", GetItem::HostName},
    {u"InstalledFMPlugins", GetItem::InstalledFMPlugins},
    {u"StatusAreaState", GetItem::StatusAreaState},
    {u"SystemDrive", GetItem::SystemDrive},
    {u"SystemPlatform", GetItem::SystemPlatform},
    {u"TemporaryPath", GetItem::TemporaryPath},
    {u"UserName", GetItem::UserName},
    {u"WindowContentHeight", GetItem::WindowContentHeight},
    {u"WindowContentWidth", GetItem::WindowContentWidth},
    {u"WindowName", GetItem::WindowName},
};

} // namespace

std::span<const GetItemName> get_items() {
    return item_names;
}

std::optional<GetItem> find_get_item(std::u16string_view name) {
    for (const GetItemName& entry : item_names) {
        if (equal_ignoring_case(entry.name, name))
            return entry.item;
    }
    return std::nullopt;
}

} // namespace vell::console
