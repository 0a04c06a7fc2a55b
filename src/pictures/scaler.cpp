#include "src/pictures/scaler.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <type_traits>
#include <vector>

namespace vell::pictures {
namespace {

constexpr float largest(std::uint8_t component_size) {
    return component_size == 1 ? 255.0F : 65535.0F;
}

std::uint16_t to_16_bits(float value) { // of 0 to 1
    return static_cast<std::uint16_t>(std::clamp(value, 0.0F, 1.0F) * 65535.0F + 0.5F);
}

// Adds a row to sums: a loop for each kind of component that the compiler makes vectors of.
template <typename Component>
void add_opaque(const Component* row, float weight, std::span<float> sums) {
    for (std::size_t i = 0; i < sums.size(); ++i)
        sums[i] += weight * static_cast<float>(row[i]);
}

// Colours are multiplied with their alpha, which is a part of 1.
template <typename Component, std::size_t components>
void add_with_alpha(const Component* row, float weight, std::span<float> sums) {
    constexpr float scale = 1 / largest(sizeof(Component));
    for (std::size_t i = 0; i < sums.size(); i += components) {
        const float alpha = weight * scale * static_cast<float>(row[i + components - 1]);
        for (std::size_t c = 0; c + 1 < components; ++c)
            sums[i + c] += alpha * static_cast<float>(row[i + c]);
        sums[i + components - 1] += alpha;
    }
}

// Does work(n) for a number of components that the compiler knows.
template <typename Work>
void for_components(std::uint32_t components, Work work) {
    switch (components) {
    case 1:
        return work(std::integral_constant<std::size_t, 1>());
    case 2:
        return work(std::integral_constant<std::size_t, 2>());
    case 3:
        return work(std::integral_constant<std::size_t, 3>());
    case 4:
        return work(std::integral_constant<std::size_t, 4>());
    default:
        return work(std::integral_constant<std::size_t, 5>());
    }
}

template <typename Component>
void add(const PictureLayout& layout, const std::byte* bytes, float weight, std::span<float> sums) {
    const auto* row = reinterpret_cast<const Component*>(bytes);
    if (!layout.has_alpha)
        return add_opaque(row, weight, sums);
    for_components(layout.components(), [&](auto components) {
        add_with_alpha<Component, components>(row, weight, sums);
    });
}

// Sums of pixels, each of which has colours multiplied with alpha and, where there is one, alpha.
class SumsToRow {
  public:
    explicit SumsToRow(const PictureLayout& layout)
        : has_alpha_(layout.has_alpha), scale_(1 / largest(layout.component_size)) {}

    // One pixel of the sums of weights that add up to `weight`.
    template <std::size_t components>
    void write(const float* sums, float weight, std::uint16_t* pixel) const {
        const float alpha = has_alpha_ ? sums[components - 1] : weight;
        const float scale = alpha > 0 ? scale_ / alpha : 0;
        for (std::size_t c = 0; c < components; ++c)
            pixel[c] = to_16_bits(sums[c] * scale);
        if (has_alpha_)
            pixel[components - 1] = to_16_bits(alpha / weight);
    }

  private:
    bool has_alpha_;
    float scale_;
};

// Cuts a side of `source` pixels into `target` equal parts, whose borders lie within pixels.
class Cuts {
  public:
    Cuts(std::uint32_t source, std::uint32_t target) : source_(source), target_(target) {}

    // The part that a pixel begins in, and how much of the pixel lies in it; the rest is the next
    // part's.
    struct Share {
        std::uint32_t part;
        float here;
    };
    Share of(std::uint32_t pixel) const {
        const std::uint64_t start = std::uint64_t{pixel} * target_;
        const std::uint64_t part = start / source_;
        const std::uint64_t end = (part + 1) * source_; // of the part, in target-ths of a pixel
        const std::uint64_t inside = std::min<std::uint64_t>(end - start, target_);
        return {static_cast<std::uint32_t>(part),
                static_cast<float>(inside) / static_cast<float>(target_)};
    }
    float part_size() const { return static_cast<float>(source_) / static_cast<float>(target_); }

  private:
    std::uint32_t source_;
    std::uint32_t target_;
};

// Sums whole rows first, which is one multiplication and addition for each component; across, a row
// is reduced only once for each row of the target.
class Reducer final : public Scaler {
  public:
    Reducer(const PictureLayout& source, const Area& area, Size target, ScaledRow give)
        : layout_(source), area_(area), target_(target), give_(std::move(give)),
          down_(area.size.height, target.height), to_row_(source),
          sums_(std::size_t{area.size.width} * source.components()),
          row_(std::size_t{target.width} * source.components()) {
        shares_.reserve(area.size.width);
        const Cuts across(area.size.width, target.width);
        for (std::uint32_t x = 0; x < area.size.width; ++x)
            shares_.push_back(across.of(x));
        part_weight_ = across.part_size() * down_.part_size();
    }

    void take(std::span<const std::byte> row) override {
        const std::uint32_t y = next_row_++;
        if (y < area_.top || y - area_.top >= area_.size.height)
            return;
        const std::byte* first =
            row.data() + std::size_t{area_.left} * layout_.components() * layout_.component_size;
        const Cuts::Share share = down_.of(y - area_.top);
        add_row(first, share.here);
        // The end of a part is the end of one of its rows, or lies within it.
        if (y - area_.top + 1 == area_.size.height ||
            down_.of(y - area_.top + 1).part != share.part) {
            give_sums();
            if (share.here < 1)
                add_row(first, 1 - share.here);
        }
    }

  private:
    void add_row(const std::byte* first, float weight) {
        if (layout_.component_size == 1)
            add<std::uint8_t>(layout_, first, weight, sums_);
        else
            add<std::uint16_t>(layout_, first, weight, sums_);
    }

    void give_sums() {
        for_components(layout_.components(),
                       [this](auto components) { reduce_sums<components>(); });
        give_(row_);
        std::ranges::fill(sums_, 0.0F);
    }

    template <std::size_t components>
    void reduce_sums() {
        std::array<float, components> part{};
        const float* sum = sums_.data();
        std::uint16_t* pixel = row_.data();
        for (std::size_t x = 0; x < shares_.size(); ++x, sum += components) {
            const Cuts::Share share = shares_[x];
            for (std::size_t c = 0; c < components; ++c)
                part[c] += share.here * sum[c];
            if (x + 1 < shares_.size() && shares_[x + 1].part == share.part)
                continue;
            to_row_.write<components>(part.data(), part_weight_, pixel);
            pixel += components;
            for (std::size_t c = 0; c < components; ++c)
                part[c] = (1 - share.here) * sum[c];
        }
    }

    PictureLayout layout_;
    Area area_;
    Size target_;
    ScaledRow give_;
    Cuts down_;
    SumsToRow to_row_;
    std::vector<Cuts::Share> shares_; // of each column
    std::vector<float> sums_;
    std::vector<std::uint16_t> row_;
    float part_weight_ = 1;
    std::uint32_t next_row_ = 0;
};

// Where the centre of a pixel of the larger picture lies among those of the smaller one.
struct Between {
    std::uint32_t first;
    std::uint32_t second;
    float of_second;
};
Between between(std::uint32_t position, std::uint32_t source, std::uint32_t target) {
    const double centre = (position + 0.5) * source / target - 0.5;
    const double clamped = std::clamp(centre, 0.0, source - 1.0);
    const auto first = static_cast<std::uint32_t>(clamped);
    return {first, std::min(first + 1, source - 1), static_cast<float>(clamped - first)};
}

class Enlarger final : public Scaler {
  public:
    Enlarger(const PictureLayout& source, const Area& area, Size target, ScaledRow give)
        : layout_(source), area_(area), target_(target), give_(std::move(give)), to_row_(source),
          above_(std::size_t{target.width} * source.components()), below_(above_.size()),
          row_(above_.size()) {}

    void take(std::span<const std::byte> row) override {
        const std::uint32_t y = next_row_++;
        if (y < area_.top || y - area_.top >= area_.size.height)
            return;
        std::swap(above_, below_);
        widen(row);
        ++rows_taken_;
        while (next_given_ < target_.height &&
               between(next_given_, area_.size.height, target_.height).second < rows_taken_)
            give_row();
    }

  private:
    // The row as floats, as wide as the target.
    void widen(std::span<const std::byte> row) {
        const std::uint32_t components = layout_.components();
        source_.assign(std::size_t{area_.size.width} * components, 0.0F);
        const std::byte* first =
            row.data() + std::size_t{area_.left} * components * layout_.component_size;
        if (layout_.component_size == 1)
            add<std::uint8_t>(layout_, first, 1, source_);
        else
            add<std::uint16_t>(layout_, first, 1, source_);
        for (std::uint32_t x = 0; x < target_.width; ++x) {
            const Between place = between(x, area_.size.width, target_.width);
            const float* left = source_.data() + std::size_t{place.first} * components;
            const float* right = source_.data() + std::size_t{place.second} * components;
            for (std::uint32_t c = 0; c < components; ++c)
                below_[std::size_t{x} * components + c] =
                    std::lerp(left[c], right[c], place.of_second);
        }
    }

    void give_row() {
        const Between place = between(next_given_++, area_.size.height, target_.height);
        const std::vector<float>& first =
            place.first == place.second || place.first + 1 == rows_taken_ ? below_ : above_;
        for_components(layout_.components(), [&](auto components) {
            std::array<float, components> mixed{};
            for (std::size_t at = 0; at < row_.size(); at += components) {
                for (std::size_t c = 0; c < components; ++c)
                    mixed[c] = std::lerp(first[at + c], below_[at + c], place.of_second);
                to_row_.write<components>(mixed.data(), 1, row_.data() + at);
            }
        });
        give_(row_);
    }

    PictureLayout layout_;
    Area area_;
    Size target_;
    ScaledRow give_;
    SumsToRow to_row_;
    std::vector<float> source_;
    std::vector<float> above_; // the last two rows that were taken
    std::vector<float> below_;
    std::vector<std::uint16_t> row_;
    std::uint32_t next_row_ = 0;
    std::uint32_t rows_taken_ = 0;
    std::uint32_t next_given_ = 0;
};

} // namespace

std::unique_ptr<Scaler> make_scaler(const PictureLayout& source, const Area& area, Size target,
                                    ScaledRow give) {
    if (target.width > area.size.width || target.height > area.size.height)
        return std::make_unique<Enlarger>(source, area, target, std::move(give));
    return std::make_unique<Reducer>(source, area, target, std::move(give));
}

} // namespace vell::pictures
