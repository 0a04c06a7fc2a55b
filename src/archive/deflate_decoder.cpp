#include "src/archive/deflate_decoder.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace vell::archive {
namespace {

constexpr std::size_t history_size = 32 * 1024; // how far back a match may reach
constexpr std::size_t room_size = 1 << 20;      // for what blocks expand to
constexpr std::size_t compressed_piece_size = 256 * 1024;
constexpr std::size_t bits_of_byte = 8;

const Bytef* bytes_at(const char* place) {
    return reinterpret_cast<const Bytef*>(place);
}

} // namespace

void DeflateDecoder::FreeBlocks::operator()(libdeflate_decompressor* decompressor) const {
    libdeflate_free_decompressor(decompressor);
}

void DeflateDecoder::FreeRest::operator()(z_stream_s* stream) const {
    inflateEnd(stream);
    delete stream;
}

DeflateDecoder::DeflateDecoder()
    : blocks_(libdeflate_alloc_decompressor()), window_(history_size + room_size) {
    if (!blocks_)
        throw std::bad_alloc();
    compressed_.reserve(compressed_piece_size);
}

DeflateDecoder::~DeflateDecoder() = default;

Result<void> DeflateDecoder::decode(const PieceSource& source, const PieceSink& sink) {
    begin();
    for (;;) {
        fill(source);
        libdeflate_blocks done{bits_done_, bytes_done_};
        const libdeflate_result result = libdeflate_deflate_decompress_blocks(
            blocks_.get(), compressed_.data(), compressed_.size(), window_.data(), window_.size(),
            &done);
        if (done.out_bytes > bytes_done_)
            VELL_TRY(sink({window_.data() + bytes_done_, done.out_bytes - bytes_done_}));
        if (result == LIBDEFLATE_SUCCESS)
            return {};
        const bool comes_on = done.in_bits > bits_done_;
        bits_done_ = done.in_bits;
        bytes_done_ = done.out_bytes;
        if (!comes_on)
            return decode_rest(source, sink);
        drop_what_is_done();
    }
}

void DeflateDecoder::begin() {
    compressed_.clear();
    bits_done_ = bytes_done_ = 0;
    has_ended_ = false;
    source_failure_.reset();
}

// What lies beyond the stream's end may be read, too, and then its failure means nothing.
void DeflateDecoder::fill(const PieceSource& source) {
    while (!has_ended_ && compressed_.size() < compressed_piece_size) {
        const Result<std::string_view> piece = source();
        if (!piece)
            source_failure_ = piece.error();
        has_ended_ = !piece || piece->empty();
        if (!has_ended_)
            compressed_.insert(compressed_.end(), piece->begin(), piece->end());
    }
}

void DeflateDecoder::drop_what_is_done() {
    const auto whole_bytes = static_cast<std::ptrdiff_t>(bits_done_ / bits_of_byte);
    compressed_.erase(compressed_.begin(), compressed_.begin() + whole_bytes);
    bits_done_ %= bits_of_byte;
    const std::size_t kept = std::min(bytes_done_, history_size);
    std::memmove(window_.data(), window_.data() + bytes_done_ - kept, kept);
    bytes_done_ = kept;
}

Result<void> DeflateDecoder::decode_rest(const PieceSource& source, const PieceSink& sink) {
    prepare_rest();
    std::string_view piece(compressed_.data(), compressed_.size());
    piece.remove_prefix((bits_done_ + bits_of_byte - 1) / bits_of_byte);
    for (;;) {
        rest_->next_in = const_cast<Bytef*>(bytes_at(piece.data()));
        rest_->avail_in = static_cast<uInt>(piece.size());
        int code = Z_OK;
        do {
            rest_->next_out = reinterpret_cast<Bytef*>(window_.data());
            rest_->avail_out = static_cast<uInt>(window_.size());
            code = inflate(rest_.get(), Z_NO_FLUSH);
            if (const std::size_t count = window_.size() - rest_->avail_out; count > 0)
                VELL_TRY(sink({window_.data(), count}));
        } while (code == Z_OK && rest_->avail_out == 0);
        if (code == Z_STREAM_END)
            return {};
        if (code != Z_OK && code != Z_BUF_ERROR) // which asks for more
            return damaged;
        if (source_failure_)
            return Failure{*source_failure_};
        piece = has_ended_ ? std::string_view() : VELL_TRY(source());
        if (piece.empty())
            return damaged;
    }
}

// At the block that `bits_done_` tells, behind the bytes before it.
void DeflateDecoder::prepare_rest() {
    if (!rest_) {
        rest_.reset(new z_stream());
        if (inflateInit2(rest_.get(), -MAX_WBITS) != Z_OK)
            throw std::bad_alloc();
    } else {
        inflateReset(rest_.get());
    }
    const std::size_t known = std::min(bytes_done_, history_size);
    inflateSetDictionary(rest_.get(), bytes_at(window_.data() + bytes_done_ - known),
                         static_cast<uInt>(known));
    if (const std::size_t begun = bits_done_ % bits_of_byte; begun > 0)
        inflatePrime(rest_.get(), static_cast<int>(bits_of_byte - begun),
                     static_cast<unsigned char>(compressed_[bits_done_ / bits_of_byte]) >> begun);
}

} // namespace vell::archive
