#include "src/formats/jpeg/icc_chunks.h"
#include "src/pictures/decoding/decoding.h"
#include "src/pictures/decoding/jpeg_errors.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#if VELL_JPEG_BACKING_STORE
#include <vell_backing_store.h>
#endif

namespace vell::pictures {
namespace {

// Gives the library the bytes of a source. What it does not look at is not read.
class JpegSource {
  public:
    explicit JpegSource(ByteSource& bytes) : bytes_(&bytes) {
        manager_.init_source = [](j_decompress_ptr) {
        };
        manager_.fill_input_buffer = [](j_decompress_ptr jpeg) -> boolean {
            of(jpeg).fill();
            return TRUE;
        };
        manager_.skip_input_data = [](j_decompress_ptr jpeg, long count) {
            of(jpeg).skip(count);
        };
        manager_.resync_to_restart = jpeg_resync_to_restart;
        manager_.term_source = [](j_decompress_ptr) {
        };
    }
    JpegSource(const JpegSource&) = delete;
    JpegSource& operator=(const JpegSource&) = delete;

    jpeg_source_mgr* manager() { return &manager_; }
    std::uint64_t position() const { return position_; } // behind what was read
    ErrorCode failure() const { return failure_; }

  private:
    static JpegSource& of(j_decompress_ptr jpeg) {
        return *reinterpret_cast<JpegSource*>(jpeg->src);
    }
    // Behind the end of the file the picture ends.
    void fill() {
        static constexpr std::array<JOCTET, 2> end_of_image{0xFF, JPEG_EOI};
        const Result<std::size_t> count = bytes_->read_at(position_, buffer_);
        if (!count)
            failure_ = count.error();
        const bool is_at_end = !count || *count == 0;
        position_ += is_at_end ? 0 : *count;
        manager_.next_input_byte =
            is_at_end ? end_of_image.data() : reinterpret_cast<const JOCTET*>(buffer_.data());
        manager_.bytes_in_buffer = is_at_end ? end_of_image.size() : *count;
    }
    void skip(long count) {
        if (count <= 0)
            return;
        const auto bytes = static_cast<std::size_t>(count);
        const std::size_t here = std::min(bytes, manager_.bytes_in_buffer);
        manager_.next_input_byte += here;
        manager_.bytes_in_buffer -= here;
        position_ += bytes - here;
    }

    jpeg_source_mgr manager_{}; // the first member: the library hands back its address
    ByteSource* bytes_;
    std::uint64_t position_ = 0;
    std::vector<char> buffer_ = std::vector<char>(64 * 1024);
    ErrorCode failure_ = ErrorCode::Ok;
};

#if VELL_JPEG_BACKING_STORE
// Lets the library keep the coefficients of large progressive pictures in a file.
VellBackingStore store_of(const DecodingRequest& request) {
    VellBackingStore store{};
    store.owner = const_cast<DecodingRequest*>(&request);
    store.open = [](void* owner, long long) -> void* {
        const auto* given = static_cast<const DecodingRequest*>(owner);
        return given->new_spill_file ? given->new_spill_file().release() : nullptr;
    };
    store.read = [](void* opened, void* buffer, long long offset, long long bytes) -> int {
        return static_cast<SpillFile*>(opened)->read(
            static_cast<std::uint64_t>(offset),
            {static_cast<char*>(buffer), static_cast<std::size_t>(bytes)});
    };
    store.write = [](void* opened, const void* buffer, long long offset, long long bytes) -> int {
        return static_cast<SpillFile*>(opened)->write(
            static_cast<std::uint64_t>(offset),
            {static_cast<const char*>(buffer), static_cast<std::size_t>(bytes)});
    };
    store.close = [](void* opened) {
        delete static_cast<SpillFile*>(opened);
    };
    return store;
}
#endif

class JpegRows final : public PictureRows {
  public:
    JpegRows(ByteSource& bytes, const DecodingRequest& request)
        : bytes_(&bytes), request_(request), source_(bytes) {
        jpeg_.err = errors_.manager();
        if (!errors_.guarded([&] { jpeg_create_decompress(&jpeg_); }))
            throw std::bad_alloc();
        jpeg_.src = source_.manager();
        progress_.progress_monitor = watch;
        progress_.self = this;
        jpeg_.progress = &progress_;
#if VELL_JPEG_BACKING_STORE
        store_ = store_of(request_);
        jpeg_.client_data = &store_;
        jpeg_.mem->max_memory_to_use = decoder_memory;
#endif
    }
    ~JpegRows() override {
        jpeg_destroy_decompress(&jpeg_);
    }

    Result<void> start() {
        if (!errors_.guarded([&] { jpeg_read_header(&jpeg_, TRUE); }))
            return failure();
        if (jpeg_.num_components == 2 || jpeg_.num_components > 4)
            return Failure{ErrorCode::PictureDamaged};
        if (jpeg_has_multiple_scans(&jpeg_) && coefficient_size() > most_coefficients)
            return Failure{ErrorCode::PictureTooLarge};
        choose_output();
        if (!errors_.guarded([&] { jpeg_start_decompress(&jpeg_); }))
            return failure();
        layout_.width = jpeg_.output_width;
        layout_.height = jpeg_.output_height;
        return {};
    }

    const PictureLayout& layout() const override {
        return layout_;
    }
    std::string profile() const override {
        constexpr std::uint64_t largest_profile = 8 << 20;
        auto profile = formats::jpeg::read_profile(formats::Window(*bytes_), largest_profile);
        return profile ? std::move(profile).value() : std::string();
    }
    Result<void> read_row(std::span<std::byte> row) override {
        row_ = reinterpret_cast<JSAMPROW>(row.data());
        if (!errors_.guarded([this] { jpeg_read_scanlines(&jpeg_, &row_, 1); }))
            return failure();
        if (layout_.model == ColourModel::Cmyk && jpeg_.saw_Adobe_marker) // which means light
            for (std::byte& component : row)
                component = ~component;
        return {};
    }

  private:
    struct Progress : jpeg_progress_mgr {
        JpegRows* self = nullptr;
    };

    Failure<ErrorCode> failure() const {
        if (source_.failure() != ErrorCode::Ok)
            return Failure{source_.failure()};
        const int error = errors_.last();
        const bool is_too_large = took_too_long_ || error == JERR_OUT_OF_MEMORY ||
                                  error == JERR_TFILE_CREATE || error == JERR_TFILE_WRITE ||
                                  error == JERR_TFILE_READ;
        return Failure{is_too_large ? ErrorCode::PictureTooLarge : ErrorCode::PictureDamaged};
    }

    // Of a progressive picture, whose scans each change all of them.
    static constexpr std::uint64_t most_coefficients = std::uint64_t{1} << 30;
    std::uint64_t coefficient_size() const {
        std::uint64_t size = 0;
        for (int i = 0; i < jpeg_.num_components; ++i) {
            const jpeg_component_info& component = jpeg_.comp_info[i];
            size += std::uint64_t{component.width_in_blocks} * component.height_in_blocks *
                    sizeof(JBLOCK);
        }
        return size;
    }

    // The colours that the library gives, and the smallest size that is large enough: it decodes
    // eighths of each side at less cost.
    void choose_output() {
        if (jpeg_.num_components == 1) {
            jpeg_.out_color_space = JCS_GRAYSCALE;
            layout_.model = ColourModel::Gray;
        } else if (jpeg_.num_components == 4) {
            jpeg_.out_color_space = JCS_CMYK;
            layout_.model = ColourModel::Cmyk;
        } else {
            jpeg_.out_color_space = JCS_RGB;
        }
        constexpr std::uint64_t eighths = 8;
        jpeg_.scale_denom = eighths;
        // Larger than the thumbnail, for what is reduced twice loses sharpness, which is seen in
        // small ones most.
        constexpr std::uint32_t small = 512;
        ThumbnailShape shape = request_.shape;
        shape.longer_side =
            shape.longer_side <= small ? 2 * shape.longer_side : shape.longer_side * 7 / 5;
        for (std::uint64_t numerator : {1, 2, 4, 8}) {
            jpeg_.scale_num = static_cast<unsigned>(numerator);
            const auto scaled = [&](std::uint64_t side) {
                return static_cast<std::uint32_t>((side * numerator + eighths - 1) / eighths);
            };
            if (is_enough({scaled(jpeg_.image_width), scaled(jpeg_.image_height)}, shape))
                break;
        }
    }

    // Called for each row of blocks in each scan. Scans may say little and cover all of a picture:
    // the time that they take is in proportion to the file.
    static void watch(j_common_ptr jpeg) {
        auto& self = *static_cast<Progress*>(jpeg->progress)->self;
        constexpr std::uint64_t blocks_of_any_file = 40'000'000;
        constexpr std::uint64_t blocks_of_a_byte = 8;
        const std::uint64_t blocks_of_a_row = (self.jpeg_.image_width + 7) / 8;
        self.blocks_ += blocks_of_a_row;
        if (self.blocks_ > blocks_of_any_file + blocks_of_a_byte * self.source_.position()) {
            self.took_too_long_ = true;
            ERREXIT(jpeg, JERR_NOTIMPL);
        }
    }

    ByteSource* bytes_;
    DecodingRequest request_;
    JpegErrors errors_;
    JpegSource source_;
    Progress progress_{};
#if VELL_JPEG_BACKING_STORE
    VellBackingStore store_{};
#endif
    jpeg_decompress_struct jpeg_{};
    PictureLayout layout_;
    JSAMPROW row_ = nullptr;
    std::uint64_t blocks_ = 0;
    bool took_too_long_ = false;
};

} // namespace

Result<std::unique_ptr<PictureRows>> open_jpeg(ByteSource& bytes, const DecodingRequest& request) {
    auto rows = std::make_unique<JpegRows>(bytes, request);
    VELL_TRY(rows->start());
    return std::unique_ptr<PictureRows>(std::move(rows));
}

} // namespace vell::pictures
