// Makes pictures smaller or larger, a row at a time.
#pragma once

#include "src/pictures/geometry.h"
#include "src/system/pictures.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

namespace vell::pictures {

// Takes a row of the scaled picture: components of 16 bits in the source's order, alpha last and
// not premultiplied.
using ScaledRow = std::function<void(std::span<const std::uint16_t>)>;

// Takes the rows of a picture from the top and gives those of its scaled area.
//
// A smaller picture is the mean of what each of its pixels covers, weighted by the part that is
// covered and by alpha. A larger one lies between the centres of the four pixels around.
class Scaler {
  public:
    Scaler() = default;
    Scaler(const Scaler&) = delete;
    Scaler& operator=(const Scaler&) = delete;
    virtual ~Scaler() = default;

    // A row of the source, of row_size bytes.
    virtual void take(std::span<const std::byte> row) = 0;
};

// The area lies in the picture. Memory is that of a few rows.
std::unique_ptr<Scaler> make_scaler(const PictureLayout& source, const Area& area, Size target,
                                    ScaledRow give);

} // namespace vell::pictures
