// A directory of tags, looked up by number.
#pragma once

#include "src/formats/tiff/numbers.h"
#include "src/pictures/inside/orientation.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace vell::pictures {

class TagDirectory {
  public:
    static formats::Read<TagDirectory> at(const formats::Window& block, std::uint64_t offset,
                                          ByteOrder order);

    std::size_t size() const { return entries_.size(); }
    std::uint32_t next() const { return next_; } // 0 for none
    ByteOrder order() const { return order_; }
    const formats::Window& block() const { return block_; }

    // nullptr for a tag that is not there.
    const formats::tiff::Entry* find(std::uint16_t tag) const;
    bool has(std::uint16_t tag) const { return find(tag) != nullptr; }
    formats::Read<std::vector<std::uint32_t>> numbers(std::uint16_t tag, std::size_t most) const;
    // nullopt for any other count than one.
    formats::Read<std::optional<std::uint32_t>> number(std::uint16_t tag) const;
    // The part of the block that the numbers of two tags tell; nullopt where one is missing.
    formats::Read<std::optional<formats::Window>> part(std::uint16_t offset_tag,
                                                       std::uint16_t length_tag) const;
    // The bytes of a value that does not stand in its entry.
    std::optional<formats::Window> value(std::uint16_t tag) const;

  private:
    TagDirectory(const formats::Window& block, ByteOrder order) : block_(block), order_(order) {}

    formats::Window block_;
    ByteOrder order_;
    std::vector<formats::tiff::Entry> entries_;
    std::uint32_t next_ = 0;
};

} // namespace vell::pictures
