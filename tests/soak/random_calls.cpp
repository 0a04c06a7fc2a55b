#include "tests/soak/random_calls.h"

#include "console/host/container_file.h"
#include "console/host/host_objects.h"
#include "console/model/unicode.h"
#include "console/reference/switch_check.h"

#include <algorithm>
#include <array>

namespace vell::soak {
namespace {

namespace fs = std::filesystem;
using console::Value;

// What these would do with a parameter cannot be kept to a folder: they run it, connect or
// disconnect disks, make folders for special purposes, change what the other threads' calls do, or
// write the file that another thread has chosen.
constexpr std::array left_out = {
    u"VlFile_ExecuteShell",       u"VlFile_MountDisk",     u"VlFile_UnmountDisk",
    u"VlFile_FindFolder",         u"VlFile_Control",       u"VlFile_SetContents",
    u"VlFile_SetDefaultFileSpec", u"VlFile_AppendContents"};

// No devices: as root, Wine sets attributes and times of NUL on the machine's own /dev/null.
constexpr std::array names = {
    u"photo.jpg",       u"letter.txt",      u"letters.zip", u"report.pdf",
    u"film.mp4",        u"drawing.png",     u"any",         u"none.txt",
    u"folder",          u"folder\\one.txt", u"none\\none",  u"a?b",
    u"letter.txt\\one", u"new.zip",         u"new.jpg",     u"folder\\..\\x",
    u"letter.txt:more", u"name. ",          u"Zoë€😀.txt"};

Value path_value(const fs::path& folder, Random& random) {
    std::u16string path = folder_text(folder);
    switch (below(12, random)) {
    case 0:
        return Value(path);
    case 1:
        return Value(path + std::u16string(300, u'x'));
    case 2: {
        std::ranges::replace(path, u'\\', u'/');
        return Value(u"filewin:/" + path + names[below(names.size(), random)]);
    }
    default:
        return Value(path + names[below(names.size(), random)]);
    }
}

Value other_value(const fs::path& folder, Random& random) {
    using console::Decimal;
    switch (below(9, random)) {
    case 0:
        return Value(u"");
    case 1:
        return Value(Decimal(static_cast<std::int64_t>(below(400, random)) - 100));
    case 2:
        return Value(Decimal(static_cast<std::int64_t>(random())));
    case 3:
        return Value(console::Date{static_cast<std::int64_t>(below(2'000'000, random))});
    case 4:
        return Value(
            console::Timestamp{Decimal(static_cast<std::int64_t>(below(1U << 20U, random)))});
    case 5:
        return Value(std::u16string(below(5000, random), u'é'));
    case 6:
        return Value(u"##EXIF 270\rtext\r##END 270\r##IPTC 2:25\rone\r##END 2:25");
    case 7:
        return Value(u"$$-43");
    default: {
        auto container = console::read_container_file(
            (folder / (below(2, random) == 0 ? L"photo.jpg" : L"report.pdf")).u16string());
        return container ? Value(console::ContainerPtr(std::make_shared<console::HostContainer>(
                               std::move(container).value())))
                         : Value(u"no container");
    }
    }
}

} // namespace

RandomCalls::RandomCalls(const console::PluginHost& host, const fs::path& reference) : host_(host) {
    for (const console::RegisteredFunction& function : host.functions()) {
        if (std::ranges::find(left_out, function.name) != left_out.end())
            continue;
        Choice choice{&function, {}};
        const std::string page = read_bytes(reference / (function.name + u".md"));
        for (const std::string& name : console::switches_in(page, "Switches"))
            choice.switches.push_back(utf16_from_utf8(name));
        choices_.push_back(std::move(choice));
    }
}

void RandomCalls::prepare(const Workplace& workplace, const fs::path& folder, Random& random) {
    for (const wchar_t* name :
         {L"photo.jpg", L"letter.txt", L"letters.zip", L"report.pdf", L"film.mp4", L"drawing.png"})
        write_bytes(folder / name, read_bytes(workplace.examples() / name));
    const auto& corpus = workplace.corpus();
    write_bytes(folder / L"any", read_bytes(corpus[below(corpus.size(), random)]));
    fs::create_directory(folder / L"folder");
    write_bytes(folder / L"folder" / L"one.txt", "one");
}

Value RandomCalls::any_value(const fs::path& folder, Random& random) {
    return below(3, random) == 0 ? other_value(folder, random) : path_value(folder, random);
}

std::u16string RandomCalls::any_switches(const Choice& choice, Random& random) {
    if (below(50, random) == 0)
        return std::u16string(below(300, random), u'"');
    std::u16string text;
    for (std::size_t left = choice.switches.empty() ? 0 : below(4, random); left > 0; --left) {
        text += choice.switches[below(choice.switches.size(), random)];
        if (text.ends_with(u'='))
            text += utf16_from_utf8(std::to_string(below(200, random)));
        text += u' ';
    }
    return text;
}

Result<Value, std::string> RandomCalls::call(const fs::path& folder, Random& random) const {
    const Choice& choice = choices_[below(choices_.size(), random)];
    const int least = choice.function->min_arguments;
    const int most = std::max(choice.function->max_arguments, least);
    const std::size_t count =
        static_cast<std::size_t>(least) + below(static_cast<std::size_t>(most - least) + 1, random);
    std::vector<Value> arguments;
    for (std::size_t i = 0; i < count; ++i)
        arguments.push_back(i == 0 ? Value(any_switches(choice, random))
                                   : any_value(folder, random));
    return host_.call(*choice.function, arguments);
}

} // namespace vell::soak
