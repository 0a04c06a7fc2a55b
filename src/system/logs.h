// What the plug-in writes down about itself.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace vell::files {

enum class LogChannel : std::int16_t {
    Server = 1,
    Web = 2,
    Debug = 101,
};

// Hosts of both kinds have a folder for logs beside their program.
enum class LogFolder : std::uint8_t { OfServer, Own };

// Room on the disk for what memory is too small for. It goes with its owner.
class OverflowFile {
  public:
    virtual ~OverflowFile() = default;
    // Over what stands there; false where it cannot be written.
    virtual bool write(std::uint64_t position, std::string_view bytes) = 0;
    // The first bytes, or none where they cannot be read.
    virtual std::string read(std::uint64_t size) = 0;
};

class Logs {
  public:
    virtual ~Logs() = default;

    // Adds a line with the time to a permanent log, from any thread. Never fails: a file that
    // cannot be had is reported once on the error output, and a full one that somebody keeps from
    // being moved takes no lines.
    virtual void append(LogChannel channel, LogFolder folder, std::string_view source,
                        std::string_view text) = 0;

    // The one overflow file of this process; null where it cannot be had.
    virtual std::unique_ptr<OverflowFile> new_overflow_file() = 0;
};

} // namespace vell::files
