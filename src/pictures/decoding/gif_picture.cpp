#include "src/pictures/decoding/gif_picture.h"

#include "src/formats/gif.h"
#include "src/pictures/decoding/pixel_format.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace vell::pictures {
namespace {

using namespace formats;

constexpr std::uint64_t most_screen_pixels = 50'000'000;
constexpr std::uint64_t most_drawn_pixels = 500'000'000;

Failure<ErrorCode> damaged() {
    return Failure{ErrorCode::PictureDamaged};
}

// GIF89a, 23: what becomes of a frame when the next one is due.
enum class Disposal : std::uint8_t { Unspecified = 0, Keep = 1, Clear = 2, Restore = 3 };

struct GraphicControl {
    Disposal disposal = Disposal::Unspecified;
    int transparent_index = -1;
};

using ColourTable = std::vector<Colour>;

// The data of an image, sub-block after sub-block, as codes of any length up to 12 bits.
class CodeReader {
  public:
    explicit CodeReader(Window& file) : file_(file) {}

    // Nothing where the data or the file ends.
    std::optional<unsigned> next(unsigned length) {
        while (count_ < length) {
            if (position_ == size_ && !next_block())
                return std::nullopt;
            bits_ |= std::uint32_t{block_[position_++]} << count_;
            count_ += 8;
        }
        const unsigned code = bits_ & ((1U << length) - 1);
        bits_ >>= length;
        count_ -= length;
        return code;
    }

    // Goes behind the data.
    void pass_rest() {
        while (next_block()) {
        }
    }

  private:
    bool next_block() {
        if (at_end_)
            return false;
        const auto size = file_.read_integer<std::uint8_t>(ByteOrder::Little);
        position_ = 0;
        size_ = 0;
        at_end_ = !size || *size == 0;
        if (at_end_)
            return false;
        const auto done = file_.read({reinterpret_cast<char*>(block_.data()), *size});
        size_ = done ? *done : 0;
        at_end_ = size_ < *size;
        return size_ > 0;
    }

    Window& file_;
    std::array<std::uint8_t, 255> block_{};
    std::size_t position_ = 0;
    std::size_t size_ = 0;
    std::uint32_t bits_ = 0;
    unsigned count_ = 0;
    bool at_end_ = false;
};

// The variable-length codes of appendix F.
class LzwReader {
  public:
    LzwReader(CodeReader& codes, unsigned least_bits)
        : codes_(codes), clear_(1U << least_bits), least_bits_(least_bits) {
        for (unsigned i = 0; i < clear_; ++i)
            entries_[i] = {0, static_cast<std::uint8_t>(i), 0};
        clear_table();
    }

    // Fills `row`; false where the data ends before or makes no sense.
    bool read(std::span<std::uint8_t> row) {
        for (std::size_t done = 0; done < row.size();) {
            if (pending_.empty() && !expand_next())
                return false;
            const std::size_t count = std::min(pending_.size(), row.size() - done);
            std::memcpy(row.data() + done, pending_.data(), count);
            pending_ = pending_.subspan(count);
            done += count;
        }
        return true;
    }

  private:
    static constexpr unsigned most_codes = 4096;

    struct Entry {
        std::uint16_t before; // the code of all but the last index
        std::uint8_t last;
        std::uint16_t depth; // indexes before the last
    };

    void clear_table() {
        next_ = clear_ + 2;
        bits_ = least_bits_ + 1;
        has_previous_ = false;
    }

    bool expand_next() {
        std::optional<unsigned> code = codes_.next(bits_);
        while (code == clear_) {
            clear_table();
            code = codes_.next(bits_);
        }
        if (!code || *code == clear_ + 1)
            return false;
        if (!has_previous_)
            return *code < clear_ && expand(*code);
        return *code < next_ || (*code == next_ && next_ < most_codes) ? expand_and_add(*code)
                                                                       : false;
    }

    bool expand_and_add(unsigned code) {
        const bool is_new = code == next_;
        const std::uint8_t first = first_of(is_new ? previous_ : code);
        if (next_ < most_codes) {
            entries_[next_] = {static_cast<std::uint16_t>(previous_), first,
                               static_cast<std::uint16_t>(entries_[previous_].depth + 1)};
            ++next_;
            if (next_ == 1U << bits_ && bits_ < 12)
                ++bits_;
        }
        return expand(code);
    }

    std::uint8_t first_of(unsigned code) const {
        while (entries_[code].depth > 0)
            code = entries_[code].before;
        return entries_[code].last;
    }

    bool expand(unsigned code) {
        previous_ = code;
        has_previous_ = true;
        const std::size_t length = std::size_t{entries_[code].depth} + 1;
        for (std::size_t i = length; i-- > 0; code = entries_[code].before)
            expanded_[i] = entries_[code].last;
        pending_ = std::span(expanded_).first(length);
        return true;
    }

    CodeReader& codes_;
    unsigned clear_;
    unsigned least_bits_;
    unsigned next_ = 0;
    unsigned bits_ = 0;
    unsigned previous_ = 0;
    bool has_previous_ = false;
    std::array<Entry, most_codes> entries_{};
    std::array<std::uint8_t, most_codes> expanded_{};
    std::span<const std::uint8_t> pending_;
};

// Rectangle of a frame.
struct Patch {
    std::uint32_t left = 0;
    std::uint32_t top = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

class Screen {
  public:
    Screen(std::uint32_t width, std::uint32_t height)
        : width_(width), height_(height), pixels_(std::size_t{width} * height, Colour{0, 0, 0, 0}) {
    }

    std::uint32_t width() const { return width_; }
    std::uint32_t height() const { return height_; }

    // The part of a row of the patch that lies on the screen.
    std::span<Colour> row(const Patch& patch, std::uint32_t y) {
        if (patch.top + y >= height_ || patch.left >= width_)
            return {};
        return row(patch.top + y).subspan(patch.left, std::min(patch.width, width_ - patch.left));
    }
    std::span<Colour> row(std::uint32_t y) {
        return std::span(pixels_).subspan(std::size_t{y} * width_, width_);
    }
    std::vector<Colour> copy(const Patch& patch) {
        std::vector<Colour> copied;
        for (std::uint32_t y = 0; y < patch.height; ++y) {
            const std::span<Colour> part = row(patch, y);
            copied.insert(copied.end(), part.begin(), part.end());
        }
        return copied;
    }
    void put_back(const Patch& patch, std::span<const Colour> copied) {
        for (std::uint32_t y = 0; y < patch.height; ++y) {
            const std::span<Colour> part = row(patch, y);
            std::copy_n(copied.begin(), part.size(), part.begin());
            copied = copied.subspan(part.size());
        }
    }
    void clear(const Patch& patch) {
        for (std::uint32_t y = 0; y < patch.height; ++y)
            std::ranges::fill(row(patch, y), Colour{0, 0, 0, 0});
    }
    bool is_opaque() const {
        return std::ranges::all_of(pixels_, [](const Colour& c) { return c.alpha == 255; });
    }

  private:
    std::uint32_t width_;
    std::uint32_t height_;
    std::vector<Colour> pixels_;
};

// The rows of an image in the order of the file (appendix E).
class RowOrder {
  public:
    RowOrder(std::uint32_t height, bool is_interlaced)
        : height_(height), is_interlaced_(is_interlaced) {}

    std::uint32_t next() {
        const std::uint32_t row = next_;
        if (!is_interlaced_) {
            ++next_;
            return row;
        }
        next_ += steps[pass_];
        while (next_ >= height_ && pass_ < 3)
            next_ = starts[++pass_];
        return row;
    }

    // How many rows from the top are there before the `done`-th one comes.
    std::uint32_t rows_from_top(std::uint32_t done) const {
        if (!is_interlaced_ || done == height_)
            return done;
        std::vector<bool> is_there(height_);
        RowOrder order(height_, true);
        for (std::uint32_t i = 0; i < done; ++i)
            is_there[order.next()] = true;
        return static_cast<std::uint32_t>(std::ranges::find(is_there, false) - is_there.begin());
    }

  private:
    static constexpr std::array<std::uint32_t, 4> starts = {0, 4, 2, 1};
    static constexpr std::array<std::uint32_t, 4> steps = {8, 8, 4, 2};

    std::uint32_t height_;
    bool is_interlaced_;
    std::uint32_t next_ = 0;
    std::size_t pass_ = 0;
};

class ComposedFrame final : public PictureRows {
  public:
    ComposedFrame(Screen screen, std::uint32_t known_rows)
        : screen_(std::move(screen)), known_rows_(known_rows) {
        layout_.width = screen_.width();
        layout_.height = screen_.height();
        layout_.has_alpha = !screen_.is_opaque();
    }

    const PictureLayout& layout() const override { return layout_; }
    Result<void> read_row(std::span<std::byte> row) override {
        if (next_ >= known_rows_)
            return damaged();
        store_colours(screen_.row(next_++), layout_.has_alpha, row);
        return {};
    }

  private:
    Screen screen_;
    std::uint32_t known_rows_;
    std::uint32_t next_ = 0;
    PictureLayout layout_;
};

class Composer {
  public:
    explicit Composer(ByteSource& bytes) : file_(bytes) {}

    Result<std::unique_ptr<PictureRows>> compose(std::uint32_t wanted) {
        VELL_TRY(read_start());
        for (std::uint32_t frame = 0;; ++frame) {
            if (!find_image())
                return frame == 0 ? damaged() : Failure{ErrorCode::BadParameter};
            const bool is_wanted = frame == wanted;
            VELL_TRY(prepare(frame));
            const std::uint32_t rows = VELL_TRY(draw());
            if (is_wanted)
                return finished(rows);
            dispose();
        }
    }

  private:
    Result<void> read_start() {
        std::array<char, 6> signature{};
        const auto read = file_.read_exactly(signature);
        const std::string_view text(signature.data(), signature.size());
        if (!read || (text != "GIF87a" && text != "GIF89a"))
            return Failure{ErrorCode::NotSupported};
        const auto screen = file_.read_record<gif::LogicalScreen>();
        if (!screen)
            return damaged();
        logical_ = *screen;
        global_ = read_table(logical_.packed);
        return {};
    }

    ColourTable read_table(std::uint8_t packed) {
        if ((packed & 0x80) == 0)
            return {};
        const auto bytes = file_.read_bytes(std::uint64_t{3} << ((packed & 7) + 1));
        ColourTable table;
        for (std::size_t i = 0; bytes && i + 3 <= bytes->size(); i += 3) {
            const auto part = [&](std::size_t n) {
                return static_cast<std::uint8_t>((*bytes)[i + n]);
            };
            table.push_back({part(0), part(1), part(2)});
        }
        return table;
    }

    void pass_blocks() { CodeReader(file_).pass_rest(); }

    void read_extension() {
        constexpr std::uint8_t graphic_control = 0xF9;
        const auto label = file_.read_integer<std::uint8_t>(ByteOrder::Little);
        if (label && *label == graphic_control) {
            const std::uint64_t start = file_.position();
            std::array<std::uint8_t, 5> block{};
            if (file_.read_exactly({reinterpret_cast<char*>(block.data()), block.size()})) {
                control_.disposal = Disposal{static_cast<std::uint8_t>(block[1] >> 2 & 7)};
                control_.transparent_index = (block[1] & 1) != 0 ? block[4] : -1;
            }
            file_.seek(start);
        }
        pass_blocks();
    }

    // Goes to the next image; false where there is none.
    bool find_image() {
        control_ = {};
        for (;;) {
            const auto introducer = file_.read_integer<std::uint8_t>(ByteOrder::Little);
            if (!introducer)
                return false;
            switch (gif::Introducer{*introducer}) {
            case gif::Introducer::Extension:
                read_extension();
                break;
            case gif::Introducer::Image: {
                const auto descriptor = file_.read_record<gif::ImageDescriptor>();
                if (!descriptor)
                    return false;
                image_ = *descriptor;
                return true;
            }
            default:
                if (*introducer != 0) // an empty block too many
                    return false;
            }
        }
    }

    // An image without a size has the screen's. A first one that is larger than the screen is in
    // its place, as browsers have it.
    Result<void> prepare(std::uint32_t frame) {
        patch_ = {image_.left, image_.top, image_.width, image_.height};
        if (patch_.width == 0 || patch_.height == 0) {
            patch_.width = logical_.width;
            patch_.height = logical_.height;
        }
        if (patch_.width == 0 || patch_.height == 0)
            return damaged();
        if (frame == 0) {
            if (patch_.width > logical_.width || patch_.height > logical_.height) {
                logical_.width = image_.width;
                logical_.height = image_.height;
                patch_.left = 0;
                patch_.top = 0;
            }
            if (std::uint64_t{logical_.width} * logical_.height > most_screen_pixels)
                return Failure{ErrorCode::PictureTooLarge};
            screen_.emplace(logical_.width, logical_.height);
        }
        if (control_.disposal == Disposal::Restore)
            covered_ = screen_->copy(patch_);
        // Frames without data cost nothing but this.
        if (control_.disposal == Disposal::Restore || control_.disposal == Disposal::Clear)
            return count_drawn(std::uint64_t{patch_.width} * patch_.height);
        return {};
    }

    Result<void> count_drawn(std::uint64_t pixels) {
        drawn_ += pixels;
        if (drawn_ > most_drawn_pixels)
            return Failure{ErrorCode::PictureTooLarge};
        return {};
    }

    // The rows of the image that are there, from its top.
    Result<std::uint32_t> draw() {
        const ColourTable local = read_table(image_.packed);
        const ColourTable& table = (image_.packed & 0x80) != 0 ? local : global_;
        const auto least_bits = file_.read_integer<std::uint8_t>(ByteOrder::Little);
        if (!least_bits)
            return std::uint32_t{0};
        CodeReader codes(file_);
        std::uint32_t done = 0;
        const bool is_interlaced = (image_.packed & 0x40) != 0;
        RowOrder order(patch_.height, is_interlaced);
        if (*least_bits >= 1 && *least_bits <= 8) {
            const auto data = std::make_unique<LzwReader>(codes, *least_bits);
            std::vector<std::uint8_t> row(patch_.width);
            for (; done < patch_.height && data->read(row); ++done) {
                draw_row(table, row, order.next());
                VELL_TRY(count_drawn(patch_.width));
            }
        }
        codes.pass_rest();
        return order.rows_from_top(done);
    }

    void draw_row(const ColourTable& table, std::span<const std::uint8_t> row, std::uint32_t y) {
        const std::span<Colour> place = screen_->row(patch_, y);
        for (std::size_t x = 0; x < place.size(); ++x)
            if (row[x] != control_.transparent_index && row[x] < table.size())
                place[x] = table[row[x]];
    }

    void dispose() {
        if (control_.disposal == Disposal::Clear)
            screen_->clear(patch_);
        else if (control_.disposal == Disposal::Restore)
            screen_->put_back(patch_, covered_);
    }

    Result<std::unique_ptr<PictureRows>> finished(std::uint32_t rows) {
        if (rows == 0)
            return damaged();
        const std::uint32_t height = screen_->height();
        const std::uint32_t known =
            rows == patch_.height ? height : std::min(patch_.top + rows, height);
        return Result<std::unique_ptr<PictureRows>>(
            std::make_unique<ComposedFrame>(std::move(*screen_), known));
    }

    Window file_;
    gif::LogicalScreen logical_;
    ColourTable global_;
    gif::ImageDescriptor image_;
    GraphicControl control_;
    Patch patch_;
    std::optional<Screen> screen_;
    std::vector<Colour> covered_;
    std::uint64_t drawn_ = 0;
};

} // namespace

Result<std::unique_ptr<PictureRows>> decode_gif(ByteSource& bytes, std::uint32_t frame) {
    return Composer(bytes).compose(frame);
}

} // namespace vell::pictures
