#include "src/pictures/open_picture.h"

#include "src/formats/recognition.h"
#include "src/formats/window.h"
#include "src/pictures/decoding/decoding.h"
#include "src/pictures/decoding/part_of_bytes.h"
#include "src/pictures/decoding/spill_file.h"
#include "src/pictures/inside/orientation.h"
#include "src/pictures/inside/previews.h"
#include "src/pictures/thumbnail.h"

#include <utility>

namespace vell::pictures {
namespace {

using formats::Format;

Result<Format> format_of(ByteSource& bytes) {
    std::array<char, formats::recognizable_size> start{};
    const std::size_t count = VELL_TRY(bytes.read_at(0, start));
    return formats::format_of({start.data(), count});
}

class PictureFinder {
  public:
    PictureFinder(const PictureSource& source, System& system, std::vector<std::string>& notes)
        : source_(source), system_(system), notes_(notes) {}

    Result<Picture> find() {
        switch (const Format format = VELL_TRY(format_of(source_.bytes))) {
        case Format::Jpeg:
        case Format::Png:
            return from_one_picture(format);
        case Format::Pdf:
            return from_pdf();
        case Format::IsoMedia: // an image whose codec the system has, before the previews in it
            return first_of(&PictureFinder::from_system, &PictureFinder::from_inside);
        default:
            return first_of(&PictureFinder::from_inside, &PictureFinder::from_system);
        }
    }

  private:
    using Attempt = Result<Picture> (PictureFinder::*)();

    // What the first way does not find, the next one may. When none finds anything, the code of one
    // that recognised the file counts.
    Result<Picture> first_of(Attempt first, Attempt second, ErrorCode code = ErrorCode::NoPicture) {
        for (const Attempt attempt : {first, second, &PictureFinder::from_shell}) {
            Result<Picture> picture = (this->*attempt)();
            if (picture || picture.error() == ErrorCode::BadParameter)
                return picture;
            if (code == ErrorCode::NoPicture && picture.error() != ErrorCode::NotSupported)
                code = picture.error();
        }
        return Failure{code};
    }

    Result<Picture> from_one_picture(Format format) {
        VELL_TRY(check_single());
        Result<Picture> picture = decoded(source_.bytes, format);
        if (!picture && picture.error() == ErrorCode::PictureDamaged)
            return first_of(&PictureFinder::from_system, &PictureFinder::from_inside,
                            picture.error());
        if (!picture)
            return picture;
        return turned(std::move(picture).value(), VELL_TRY(orientation_of(source_.bytes)));
    }

    Result<Picture> from_pdf() {
        const PdfPageRequest request{source_.page, source_.shape.longer_side};
        const Picture page = VELL_TRY(system_.pictures().pdf_page(source_.bytes, request, notes_));
        return make_thumbnail(page, source_.shape);
    }

    // By whatever decoder the system has.
    Result<Picture> from_system() {
        const auto rows = VELL_TRY(system_.pictures().decode(source_.bytes, source_.page - 1));
        Picture picture = VELL_TRY(make_thumbnail(*rows, source_.shape));
        return turned(std::move(picture), VELL_TRY(orientation_of(source_.bytes)));
    }

    // A preview or a cover; where the best one is damaged, the next best.
    Result<Picture> from_inside() {
        auto found = VELL_TRY(find_pictures(source_.bytes));
        if (found.empty())
            return Failure{ErrorCode::NoPicture};
        VELL_TRY(check_single());
        Result<Picture> picture = Failure{ErrorCode::NoPicture};
        constexpr int most_attempts = 4;
        for (int attempt = 0; attempt < most_attempts; ++attempt) {
            const EmbeddedPicture* chosen = choose(found, source_.shape.longer_side);
            if (!chosen)
                break;
            picture = from_embedded(*chosen);
            if (picture || picture.error() != ErrorCode::PictureDamaged)
                break;
            found.erase(found.begin() + (chosen - found.data()));
        }
        return picture;
    }
    Result<Picture> from_embedded(const EmbeddedPicture& embedded) {
        if (!embedded.bytes.empty()) {
            BytesInMemory bytes(embedded.bytes);
            return from_embedded_bytes(bytes, embedded.orientation);
        }
        PartOfBytes bytes(source_.bytes, embedded.offset, embedded.size);
        return from_embedded_bytes(bytes, embedded.orientation);
    }
    Result<Picture> from_embedded_bytes(ByteSource& bytes, Orientation orientation) {
        const Format format = VELL_TRY(format_of(bytes));
        Picture picture = VELL_TRY(decoded(bytes, format));
        return turned(std::move(picture), orientation);
    }

    Result<Picture> from_shell() {
        if (!source_.path)
            return Failure{ErrorCode::NoPicture};
        const std::uint32_t size = source_.shape.longer_side;
        const Picture picture = VELL_TRY(system_.pictures().shell_thumbnail(*source_.path, size));
        return make_thumbnail(picture, source_.shape);
    }

    Result<Picture> decoded(ByteSource& bytes, Format format) {
        const DecodingRequest request{source_.shape, [&] {
                                          return new_spill_file(system_.files());
                                      }};
        const auto rows =
            VELL_TRY(format == Format::Png ? open_png(bytes, request) : open_jpeg(bytes, request));
        return make_thumbnail(*rows, source_.shape);
    }

    Result<void> check_single() const {
        return source_.page == 1 ? Result<void>() : Failure{ErrorCode::BadParameter};
    }

    const PictureSource& source_;
    System& system_;
    std::vector<std::string>& notes_;
};

} // namespace

Result<Picture> thumbnail_of(const PictureSource& source, System& system,
                             std::vector<std::string>& notes) {
    return PictureFinder(source, system, notes).find();
}

} // namespace vell::pictures
