// Commands and pictures, as far as a policy allows.
#pragma once

#include "src/policy/path_guard.h"

namespace vell::policy {

class GuardedCommands : public files::Commands {
  public:
    GuardedCommands(const Policy& policy, System& system) : policy_(policy), system_(system) {}

    Result<std::unique_ptr<files::RunningCommand>>
    start(const std::u16string& command, const files::CommandSettings& settings) override;

  private:
    const Policy& policy_;
    System& system_;
};

class GuardedPictures : public pictures::PictureSystem {
  public:
    GuardedPictures(PathGuard& guard, System& system) : guard_(guard), system_(system) {}

    Result<std::unique_ptr<pictures::PictureRows>> decode(ByteSource& bytes,
                                                          std::uint32_t frame) override;
    Result<pictures::Picture> pdf_page(ByteSource& bytes, const pictures::PdfPageRequest& request,
                                       std::vector<std::string>& notes) override;
    Result<pictures::Picture> shell_thumbnail(const params::NativePath& path,
                                              std::uint32_t size) override;
    Result<pictures::Picture> icon(const params::NativePath& path, pictures::IconOf what,
                                   std::uint32_t size) override;

  private:
    pictures::PictureSystem& inner() { return system_.pictures(); }

    PathGuard& guard_;
    System& system_;
};

} // namespace vell::policy
