// One writer at a time for a file of this process.
#pragma once

#include "src/system/file_access.h"

#include <string>
#include <utility>

namespace vell::files {

// Held while a function changes a file. Work that closes and opens the file on its way is covered
// too, where the system's own refusal to share leaves gaps. Other processes, and other names of the
// same file, meet only the system's refusal.
class WriteTurn {
  public:
    // Busy while another call has the turn. Letters A to Z compare without case, "/" is "\", and
    // what Windows cuts off at the end does not count.
    static Result<WriteTurn> take(const NativePath& path);

    WriteTurn(WriteTurn&& other) noexcept : key_(std::exchange(other.key_, {})) {}
    WriteTurn& operator=(WriteTurn&&) = delete;
    ~WriteTurn();

  private:
    explicit WriteTurn(std::u16string key) : key_(std::move(key)) {}

    std::u16string key_; // empty when there is nothing to give back
};

} // namespace vell::files
