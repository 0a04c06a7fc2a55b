// The system with a policy before it: what the policy refuses does not reach the system, and the
// call that asked for it ends with RefusedByPolicy.
#pragma once

#include "src/policy/guarded_desktop.h"
#include "src/policy/guarded_files.h"
#include "src/policy/guarded_items.h"
#include "src/policy/guarded_work.h"

namespace vell::policy {

class GuardedSystem : public System {
  public:
    // Both outlive it.
    GuardedSystem(const Policy& policy, System& system);

    files::FileSystem& files() override { return files_; }
    files::TreeSystem& tree() override { return tree_; }
    files::FolderSource& folders() override { return files_; }
    files::ItemProperties& properties() override { return properties_; }
    files::FinalPaths& final_paths() override { return tree_; }
    files::Places& places() override { return places_; }
    files::DiskSystem& disks() override { return disks_; }
    files::ShellLinks& links() override { return places_; }
    files::Desktop& desktop() override { return desktop_; }
    files::Commands& commands() override { return commands_; }
    pictures::PictureSystem& pictures() override { return pictures_; }
    files::Clock& clock() override { return system_.clock(); }
    files::Logs& logs() override { return system_.logs(); }
    Result<std::unique_ptr<files::Digest>> new_digest(files::DigestAlgorithm algorithm) override {
        return system_.new_digest(algorithm);
    }
    Result<void> read_pdf_text(ByteSource& file, const params::ByteSink& sink,
                               std::vector<std::string>& notes) override;
    std::vector<LinkedLibrary> linked_libraries() override { return system_.linked_libraries(); }
    const Limits& limits() override { return policy_.limits; }

  private:
    const Policy& policy_;
    System& system_;
    PathGuard guard_;
    GuardedFiles files_;
    GuardedTree tree_;
    GuardedProperties properties_;
    GuardedPlaces places_;
    GuardedDisks disks_;
    GuardedDesktop desktop_;
    GuardedCommands commands_;
    GuardedPictures pictures_;
};

} // namespace vell::policy
