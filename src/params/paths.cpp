#include "src/params/paths.h"

#include "src/base/ascii.h"

namespace vell::params {
namespace {

struct Prefix {
    std::u16string_view text;
    PathKind kind;
};

constexpr Prefix prefixes[] = {
    {u"filemac:", PathKind::FileMac},   {u"filewin:", PathKind::FileWin},
    {u"file:", PathKind::File},         {u"imagemac:", PathKind::ImageMac},
    {u"imagewin:", PathKind::ImageWin}, {u"image:", PathKind::Image},
    {u"moviemac:", PathKind::MovieMac}, {u"moviewin:", PathKind::MovieWin},
    {u"movie:", PathKind::Movie},       {u"size:", PathKind::Size},
    {u"smb:", PathKind::Smb},
};

// Characters of a "…win:" prefix to remove: with its slash where `bit` is accepted and the slash is
// there, without it where that is accepted.
std::size_t windows_prefix_length(Accept flags, Accept bit, std::u16string_view path,
                                  std::size_t length) {
    if (accepts(flags, bit) && path.substr(length).starts_with(u'/'))
        return length + 1;
    return accepts(flags, Accept::WithoutSlash) ? length : 0;
}

std::size_t prefix_length(Accept flags, std::u16string_view path) {
    if (path.starts_with(u'/') && !path.starts_with(u"//"))
        return 1;
    switch (classify(path)) {
    case PathKind::FileWin:
        return windows_prefix_length(flags, Accept::FileWin, path, 8);
    case PathKind::File:
        return accepts(flags, Accept::File) ? 5 : 0;
    case PathKind::ImageWin:
        return windows_prefix_length(flags, Accept::ImageWin, path, 9);
    case PathKind::MovieWin:
        return windows_prefix_length(flags, Accept::MovieWin, path, 9);
    default:
        return 0;
    }
}

// "C:", which Windows takes for the folder that is the current one there.
bool is_bare_drive(std::u16string_view path) {
    return path.size() == 2 && is_letter(path[0]) && path[1] == u':';
}

} // namespace

PathKind classify(std::u16string_view path) {
    for (const Prefix& prefix : prefixes)
        if (path.starts_with(prefix.text))
            return prefix.kind;
    return PathKind::Plain;
}

Result<void> strip_prefix(Accept flags, std::u16string& path) {
    if (flags == Accept::Nothing)
        return {};
    if (path.find(u'\r') == std::u16string::npos) {
        path.erase(0, prefix_length(flags, path));
        return {};
    }
    if (!accepts(flags, Accept::SeveralLines))
        return Failure{ErrorCode::SeveralLines};
    std::u16string stripped;
    for (std::u16string_view rest = path;;) {
        const std::size_t end = rest.find(u'\r');
        const std::u16string_view line = rest.substr(0, end);
        stripped += line.substr(prefix_length(flags, line));
        if (end == std::u16string_view::npos)
            break;
        stripped += u'\r';
        rest.remove_prefix(end + 1);
    }
    path = std::move(stripped);
    return {};
}

Result<NativePath> resolve(Accept flags, std::u16string path, const PathUse& use) {
    VELL_TRY(strip_prefix(flags, path));
    if (path.empty())
        return Failure{ErrorCode::BadParameter};
    if (path.starts_with(u"$$"))
        return Failure{ErrorCode::ErrorAsPath};
    if (path.size() > longest_path)
        return Failure{ErrorCode::PathTooLong};
    if (path.find(u'\0') != std::u16string::npos)
        return Failure{ErrorCode::BadName};
    if (is_bare_drive(path) || (use.as_folder && !path.ends_with(u'\\')))
        path += u'\\';
    NativePath native{std::move(path), std::nullopt};
    if (use.narrow)
        native.narrow = VELL_TRY(use.narrow(native.wide));
    return native;
}

Result<NativePath> resolve_new(Accept flags, std::u16string path, const PathUse& use,
                               const std::function<bool(const NativePath&)>& exists) {
    NativePath native = VELL_TRY(resolve(flags, std::move(path), use));
    if (exists(native))
        return Failure{ErrorCode::AlreadyExists};
    return native;
}

} // namespace vell::params
