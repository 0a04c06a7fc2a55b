// The parts of the system, each made where its subject is. Windows only.
#pragma once

#include "src/system/system.h"

namespace vell::windows {

files::FileSystem& file_system();
files::TreeSystem& tree();
files::FolderSource& folders();
files::ItemProperties& properties();
files::FinalPaths& final_paths();
files::Places& places();
files::DiskSystem& disks();
files::ShellLinks& links();
files::Desktop& desktop();
files::Commands& commands();
files::Logs& logs();
pictures::PictureSystem& pictures();
Result<std::unique_ptr<files::Digest>> new_digest(files::DigestAlgorithm algorithm);
std::vector<LinkedLibrary> linked_libraries();

} // namespace vell::windows
