// Path prefixes against a reading line by line. The bits of the input's first byte choose what is
// accepted; the rest is the path.
#include "fuzz/input.h"
#include "src/base/ascii.h"
#include "src/base/utf8.h"
#include "src/files/paths/path_references.h"
#include "src/params/path_form.h"
#include "src/params/paths.h"

#include <algorithm>
#include <string>

namespace vell::paths_fuzz {
namespace {

using namespace vell::params;

struct Choice {
    Accept flags = Accept::Nothing;
    bool as_folder = false;
};

Choice choice_of(std::uint8_t bits) {
    constexpr Accept flags[] = {Accept::FileWin | Accept::FileMac,
                                Accept::File,
                                Accept::ImageWin | Accept::ImageMac,
                                Accept::MovieWin | Accept::MovieMac,
                                Accept::WithoutSlash,
                                Accept::SeveralLines};
    Choice choice{Accept::Nothing, (bits & 0x40) != 0};
    for (int bit = 0; bit < 6; ++bit)
        if ((bits >> bit & 1) != 0)
            choice.flags = choice.flags | flags[bit];
    return choice;
}

std::u16string stripped_line(Accept flags, std::u16string line) {
    if (line.starts_with(u'/') && !line.starts_with(u"//"))
        return line.substr(1);
    struct Form {
        Accept accept;
        std::u16string prefix;
    };
    const Form forms[] = {
        {Accept::FileWin, u"filewin:/"},
        {Accept::ImageWin, u"imagewin:/"},
        {Accept::MovieWin, u"moviewin:/"},
        {Accept::WithoutSlash, u"filewin:"},
        {Accept::WithoutSlash, u"imagewin:"},
        {Accept::WithoutSlash, u"moviewin:"},
        {Accept::File, u"file:"},
    };
    for (const Form& form : forms)
        if (accepts(flags, form.accept) && line.starts_with(form.prefix))
            return line.substr(form.prefix.size());
    return line;
}

void check_stripping(Accept flags, const std::u16string& path) {
    std::u16string stripped = path;
    const bool done = strip_prefix(flags, stripped).has_value();
    const bool several = path.find(u'\r') != std::u16string::npos;
    FUZZ_CHECK(done ==
               (!several || flags == Accept::Nothing || accepts(flags, Accept::SeveralLines)));
    if (!done || flags == Accept::Nothing) {
        FUZZ_CHECK(stripped == path);
        return;
    }
    std::u16string expected;
    for (std::size_t start = 0;;) {
        const std::size_t end = path.find(u'\r', start);
        expected += stripped_line(flags, path.substr(start, end - start));
        if (end == std::u16string::npos)
            break;
        expected += u'\r';
        start = end + 1;
    }
    FUZZ_CHECK(stripped == expected);
    // Another call removes more only where another prefix has come to the start.
    if (!several && !stripped.starts_with(u'/') && classify(stripped) == PathKind::Plain) {
        std::u16string again = stripped;
        FUZZ_CHECK(strip_prefix(flags, again) && again == stripped);
    }
}

void check_resolving(const Choice& choice, const std::u16string& path) {
    std::size_t narrowed = 0;
    const PathUse use{choice.as_folder, [&narrowed](std::u16string_view text) {
                          ++narrowed;
                          return Result<std::string>(std::string(text.size(), 'n'));
                      }};
    const auto native = resolve(choice.flags, path, use);
    FUZZ_CHECK(narrowed == (native ? 1U : 0U));
    if (!native) {
        const ErrorCode error = native.error();
        FUZZ_CHECK(error == ErrorCode::BadParameter || error == ErrorCode::SeveralLines ||
                   error == ErrorCode::ErrorAsPath || error == ErrorCode::BadName ||
                   (error == ErrorCode::PathTooLong && path.size() > longest_path));
        return;
    }
    const std::u16string& wide = native->wide;
    FUZZ_CHECK(!wide.empty() && !wide.starts_with(u"$$"));
    FUZZ_CHECK(wide.find(u'\0') == std::u16string::npos);
    const bool is_root_of_drive = wide.size() == 3 && wide.ends_with(u":\\");
    FUZZ_CHECK(wide.size() <= path.size() + (choice.as_folder || is_root_of_drive ? 1 : 0));
    FUZZ_CHECK(wide.size() != 2 || wide[1] != u':' || !is_letter(wide[0]));
    FUZZ_CHECK(!choice.as_folder || wide.ends_with(u'\\'));
    FUZZ_CHECK(native->narrow.has_value() && native->narrow->size() == wide.size());
}

// The path of a reference is one line, and reads the same once more in the host's form.
void check_reference(const std::u16string& reference) {
    const auto full_path = [](std::u16string path) -> Result<std::u16string> {
        std::ranges::replace(path, u'/', u'\\');
        return path.starts_with(u"C:\\") ? path : u"C:\\here\\" + path;
    };
    const auto path = files::path_of_reference(reference, full_path);
    if (!path)
        return;
    FUZZ_CHECK(path->find(u'\r') == std::u16string::npos);
    const auto again = files::path_of_reference(host_form(*path), full_path);
    FUZZ_CHECK(again && *again == *path);
}

} // namespace

FUZZ_TARGET(paths) {
    if (size == 0)
        return 0;
    const Choice choice = choice_of(data[0]);
    const std::u16string path = utf16_from_utf8(fuzz::as_text(data + 1, size - 1));
    check_stripping(choice.flags, path);
    check_resolving(choice, path);
    check_reference(path);
    return 0;
}

} // namespace vell::paths_fuzz
