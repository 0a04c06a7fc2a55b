#include "src/windows/parts.h"

namespace vell::windows {
namespace {

class WindowsPictures final : public pictures::PictureSystem {
  public:
    Result<std::unique_ptr<pictures::PictureRows>> decode(ByteSource&, std::uint32_t) override {
        return Failure{ErrorCode::NotSupported};
    }
    Result<pictures::Picture> pdf_page(ByteSource&, const pictures::PdfPageRequest&,
                                       std::vector<std::string>&) override {
        return Failure{ErrorCode::NotSupported};
    }
    Result<pictures::Picture> shell_thumbnail(const params::NativePath&, std::uint32_t) override {
        return Failure{ErrorCode::NoPicture};
    }
    Result<pictures::Picture> icon(const params::NativePath&, pictures::IconOf,
                                   std::uint32_t) override {
        return Failure{ErrorCode::NoPicture};
    }
};

} // namespace

pictures::PictureSystem& pictures() {
    static WindowsPictures instance;
    return instance;
}

} // namespace vell::windows
