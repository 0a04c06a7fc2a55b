#include "src/pictures/create_thumbnail.h"

#include "src/files/contents/buffered_reader.h"
#include "src/files/contents/source.h"
#include "src/pictures/encoders.h"
#include "src/pictures/open_picture.h"
#include "src/pictures/thumbnail.h"
#include "src/pictures/thumbnail_request.h"

namespace vell::pictures {
namespace {

void give(params::Call& call, Picture picture, const ThumbnailRequest& request,
          std::u16string_view file) {
    drop_opaque_alpha(picture);
    const bool as_png = request.type == PictureType::ByContent ? picture.has_alpha
                                                               : request.type == PictureType::Png;
    if (!as_png)
        flatten(picture, request.background);
    constexpr std::size_t name_position = 2;
    const std::u16string name =
        picture_name(call.text(name_position), file, as_png ? u"png" : u"jpg");
    const std::string bytes = as_png ? encode_png(picture) : encode_jpeg(picture, request.quality);
    call.set_container({as_png ? "PNGf" : "JPEG", name, bytes, picture.width, picture.height});
}

} // namespace

Result<void> create_thumbnail(params::Call& call, System& system) {
    const ThumbnailRequest request = VELL_TRY(thumbnail_request_of(call));
    const files::Source source =
        VELL_TRY(files::open_source(call, 1, system.files(), files::Sharing::Shared));
    files::BufferedReader reader = VELL_TRY(files::BufferedReader::over(*source.file));
    std::vector<std::string> notes;
    Result<Picture> picture =
        thumbnail_of({reader, source.path, request.shape, request.page}, system, notes);
    for (const std::string& note : notes)
        call.debug_note(note);
    give(call, VELL_TRY(std::move(picture)), request, source.name);
    return {};
}

} // namespace vell::pictures
