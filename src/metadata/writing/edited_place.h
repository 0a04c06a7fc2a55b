// Places in files of formats that are written by replacing parts of them.
#pragma once

#include "src/metadata/writing/block_place.h"
#include "src/metadata/writing/file_edits.h"

#include <string>
#include <utility>

namespace vell::metadata {

class EditedPlace : public BlockPlace {
  public:
    explicit EditedPlace(std::uint64_t file_size) : edits_(file_size) {}

    std::string_view content() const final { return content_; }
    bool is_there() const final { return is_there_; }
    Result<void> copy(files::File& from, files::File& to) const final {
        return edits_.copy(from, to);
    }
    // A block that is there already leaves the file as it is. The content is not needed any more.
    Result<void> put(std::string block) final {
        const bool is_there_already = !block.empty() && block == content_;
        std::string().swap(content_);
        return is_there_already ? Result<void>() : edit(std::move(block));
    }

  protected:
    // Notes the edits that give the place another block; an empty one is none.
    virtual Result<void> edit(std::string block) = 0;

    FileEdits edits_;
    std::string content_;
    bool is_there_ = false;
};

} // namespace vell::metadata
