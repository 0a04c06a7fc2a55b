#include "src/pictures/decoding/bmp_picture.h"
#include "src/pictures/decoding/gif_picture.h"
#include "src/windows/documents/poppler_page.h"
#include "src/windows/parts.h"
#include "src/windows/pictures/icon_decoder.h"
#include "src/windows/pictures/shell_pictures.h"
#include "src/windows/pictures/wic_decoder.h"
#include "src/windows/process/large_stack.h"

namespace vell::windows {
namespace {

// Decoders of our own, where Windows' show frames as they lie in the file or refuse too much, come
// before those of Windows.
using Decoder = Result<std::unique_ptr<pictures::PictureRows>> (*)(ByteSource&, std::uint32_t);
constexpr Decoder decoders[] = {pictures::decode_gif, pictures::decode_bmp, decode_icon_frame,
                                decode_by_wic};

class WindowsPictures final : public pictures::PictureSystem {
  public:
    Result<std::unique_ptr<pictures::PictureRows>> decode(ByteSource& bytes,
                                                          std::uint32_t frame) override {
        for (const Decoder decoder : decoders) {
            auto rows = decoder(bytes, frame);
            if (rows || rows.error() != ErrorCode::NotSupported)
                return rows;
        }
        return Failure{ErrorCode::NotSupported};
    }
    // On a stack that holds what such files nest.
    Result<pictures::Picture> pdf_page(ByteSource& bytes, const pictures::PdfPageRequest& request,
                                       std::vector<std::string>& notes) override {
        Result<pictures::Picture> picture = Failure{ErrorCode::PdfFailed};
        run_on_large_stack([&] { picture = draw_by_poppler(bytes, request, notes); });
        return picture;
    }
    Result<pictures::Picture> shell_thumbnail(const params::NativePath& path,
                                              std::uint32_t size) override {
        return windows::shell_thumbnail(path, size);
    }
    Result<pictures::Picture> icon(const params::NativePath& path, pictures::IconOf what,
                                   std::uint32_t size) override {
        return shell_icon(path, what, size);
    }
};

} // namespace

pictures::PictureSystem& pictures() {
    static WindowsPictures instance;
    return instance;
}

} // namespace vell::windows
