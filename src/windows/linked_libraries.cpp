#include "src/windows/parts.h"

#include <expat.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include <poppler-config.h>

#include <cstdio> // which the JPEG library's header needs
#include <jpeglib.h>
#include <lcms2.h>
#include <libdeflate.h>
#include <png.h>
#include <zlib.h>

// The word behind a macro that stands for one.
#define VELL_WORD_OF(macro) VELL_WORD(macro)
#define VELL_WORD(word) #word

namespace vell::windows {
namespace {

std::string dotted(int major, int minor, int patch) {
    return std::to_string(major) + '.' + std::to_string(minor) + '.' + std::to_string(patch);
}

std::string expat_version() {
    const XML_Expat_Version version = XML_ExpatVersionInfo();
    return dotted(version.major, version.minor, version.micro);
}

std::string lcms_version() {
    const int version = cmsGetEncodedCMMversion(); // 2140 is 2.14
    const std::string text =
        std::to_string(version / 1000) + '.' + std::to_string(version % 1000 / 10);
    return version % 10 == 0 ? text : text + '.' + std::to_string(version % 10);
}

} // namespace

std::vector<LinkedLibrary> linked_libraries() {
    return {{"Expat", expat_version()},
            {"FreeType", dotted(FREETYPE_MAJOR, FREETYPE_MINOR, FREETYPE_PATCH)},
            {"libdeflate", LIBDEFLATE_VERSION_STRING},
            {"libjpeg-turbo", VELL_WORD_OF(LIBJPEG_TURBO_VERSION)},
            {"libpng", png_get_libpng_ver(nullptr)},
            {"libstdc++", VELL_WORD_OF(_GLIBCXX_RELEASE)},
            {"Little CMS", lcms_version()},
            {"Poppler", POPPLER_VERSION},
            {"zlib", zlibVersion()}};
}

} // namespace vell::windows
