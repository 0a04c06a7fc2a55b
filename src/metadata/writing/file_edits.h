// A copy of a file in which some parts are others.
#pragma once

#include "src/base/result.h"
#include "src/system/file_access.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vell::metadata {

class FileEdits {
  public:
    explicit FileEdits(std::uint64_t file_size) : file_size_(file_size) {}

    // Those bytes in the place of the ones from `start` to `end`; added ones when both are the
    // same. Parts do not overlap. What is added in one place stands in the order of its calls,
    // before what is replaced there.
    void put(std::uint64_t start, std::uint64_t end, std::string bytes);
    void drop(std::uint64_t start, std::uint64_t end) { put(start, end, {}); }
    // Added at `place`: what stands in the file from `start` to `end`, once more.
    void repeat(std::uint64_t place, std::uint64_t start, std::uint64_t end);

    // All of others, in their order.
    void add(FileEdits others);

    std::uint64_t file_size() const { return file_size_; }
    // What the copy has more than the file.
    std::int64_t growth() const;

    // Busy when the file has another size by now.
    Result<void> copy(files::File& from, files::File& to) const;

  private:
    struct Edit {
        std::uint64_t start;
        std::uint64_t end;
        std::string bytes;
        // Of the file, behind those bytes.
        std::uint64_t repeated_start = 0;
        std::uint64_t repeated_end = 0;

        std::uint64_t repeated() const { return repeated_end - repeated_start; }
    };
    void insert(Edit edit);

    std::uint64_t file_size_;
    std::vector<Edit> edits_; // by their start
};

} // namespace vell::metadata
