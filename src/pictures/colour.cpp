#include "src/pictures/colour.h"

#include <lcms2.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace vell::pictures {
namespace {

struct CloseProfile {
    using pointer = cmsHPROFILE;
    void operator()(cmsHPROFILE profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;

struct FreeToneCurve {
    void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};
using ToneCurve = std::unique_ptr<cmsToneCurve, FreeToneCurve>;

// The library's state for one picture; it tells nobody of faults.
class Context {
  public:
    Context() : context_(cmsCreateContext(nullptr, nullptr)) {
        if (!context_)
            throw std::bad_alloc();
        cmsSetLogErrorHandlerTHR(context_, [](cmsContext, cmsUInt32Number, const char*) {});
    }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    ~Context() { cmsDeleteContext(context_); }

    cmsContext get() const { return context_; }

  private:
    cmsContext context_;
};

cmsColorSpaceSignature signature_of(ColourModel model) {
    switch (model) {
    case ColourModel::Gray:
        return cmsSigGrayData;
    case ColourModel::Rgb:
        return cmsSigRgbData;
    case ColourModel::Cmyk:
        break;
    }
    return cmsSigCmykData;
}

// As large as those of the source: the library is fast for 8 bits, and exact for 16.
cmsUInt32Number row_format(const PictureLayout& source) {
    const int space = source.model == ColourModel::Gray  ? PT_GRAY
                      : source.model == ColourModel::Rgb ? PT_RGB
                                                         : PT_CMYK;
    return COLORSPACE_SH(space) | CHANNELS_SH(source.colours()) | BYTES_SH(source.component_size) |
           EXTRA_SH(source.has_alpha ? 1 : 0);
}

constexpr std::uint8_t to_8_bits(std::uint32_t value) {
    return static_cast<std::uint8_t>((value * 255 + 32767) / 65535);
}

// Without a profile.
void convert_pixel(const PictureLayout& source, const std::uint16_t* from, std::uint8_t* to) {
    switch (source.model) {
    case ColourModel::Gray:
        std::fill_n(to, 3, to_8_bits(from[0]));
        break;
    case ColourModel::Rgb:
        std::transform(from, from + 3, to, to_8_bits);
        break;
    case ColourModel::Cmyk:
        for (int c = 0; c < 3; ++c)
            to[c] = to_8_bits((65535U - from[c]) * (65535U - from[3]) / 65535U);
        break;
    }
    if (source.has_alpha)
        to[3] = to_8_bits(from[source.colours()]);
}

Profile make_profile(const Context& context, ColourModel model, cmsToneCurve& curve,
                     const Primaries& primaries) {
    const auto xyy = [](Chromaticity colour) {
        return cmsCIExyY{colour.x, colour.y, 1};
    };
    const cmsCIExyY white = xyy(primaries.white);
    if (model == ColourModel::Gray)
        return Profile(cmsCreateGrayProfileTHR(context.get(), &white, &curve));
    const cmsCIExyYTRIPLE colours{xyy(primaries.red), xyy(primaries.green), xyy(primaries.blue)};
    cmsToneCurve* curves[] = {&curve, &curve, &curve};
    return Profile(cmsCreateRGBProfileTHR(context.get(), &white, &colours, curves));
}

// The bytes of a profile; none for null.
std::string saved(const Profile& profile) {
    cmsUInt32Number size = 0;
    if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size))
        return {};
    std::string bytes(size, '\0');
    return cmsSaveProfileToMem(profile.get(), bytes.data(), &size) ? bytes : std::string();
}

// Made once: its curve is a table, since the library would calculate thousands of powers for each
// picture otherwise. For each picture it inverts the table, looking through all of it for each of
// 4,096 values. One of 258 entries, which stand at whole values of 16 bits, is nowhere off by more
// than a fortieth of a step of 8 bits, just as one of 4,096.
std::string make_srgb_profile() {
    constexpr std::size_t entries = 258;
    const Context context;
    cmsFloat64Number parameters[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    constexpr int inverse_gamma_with_line = 4; // IEC 61966-2-1
    const ToneCurve exact(
        cmsBuildParametricToneCurve(context.get(), inverse_gamma_with_line, parameters));
    if (!exact)
        return {};
    std::vector<cmsUInt16Number> table(entries);
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = cmsEvalToneCurve16(exact.get(),
                                      static_cast<cmsUInt16Number>(i * 65535 / (table.size() - 1)));
    const ToneCurve curve(cmsBuildTabulatedToneCurve16(
        context.get(), static_cast<cmsUInt32Number>(table.size()), table.data()));
    return curve ? saved(make_profile(context, ColourModel::Rgb, *curve, srgb_primaries))
                 : std::string();
}

bool is_near(Chromaticity a, Chromaticity b) {
    return std::abs(a.x - b.x) < 0.001 && std::abs(a.y - b.y) < 0.001;
}
bool is_srgb(const Primaries& primaries) {
    return is_near(primaries.white, srgb_primaries.white) &&
           is_near(primaries.red, srgb_primaries.red) &&
           is_near(primaries.green, srgb_primaries.green) &&
           is_near(primaries.blue, srgb_primaries.blue);
}

} // namespace

std::string gamma_profile(ColourModel model, double exponent, const Primaries& primaries) {
    constexpr double near_srgb = 0.05; // files that mean sRGB say 2.2
    const bool same_curve = std::abs(exponent - 2.2) < near_srgb;
    if (!(exponent > 0.1 && exponent < 10) ||
        (same_curve && (model == ColourModel::Gray || is_srgb(primaries))))
        return {};
    const Context context;
    const ToneCurve curve(cmsBuildGamma(context.get(), exponent));
    return curve ? saved(make_profile(context, model, *curve, primaries)) : std::string();
}

struct ToSrgb::Transform {
    Context context;
    cmsHTRANSFORM handle = nullptr;

    Transform() = default;
    Transform(const Transform&) = delete;
    Transform& operator=(const Transform&) = delete;
    ~Transform() {
        if (handle)
            cmsDeleteTransform(handle);
    }
};

ToSrgb::ToSrgb(const PictureLayout& source, std::string_view profile) : source_(source) {
    constexpr std::size_t largest_profile = 8 << 20;
    if (profile.empty() || profile.size() > largest_profile)
        return;
    auto transform = std::make_unique<Transform>();
    const cmsContext context = transform->context.get();
    const Profile from(cmsOpenProfileFromMemTHR(context, profile.data(),
                                                static_cast<cmsUInt32Number>(profile.size())));
    if (!from || cmsGetColorSpace(from.get()) != signature_of(source.model))
        return;
    static const std::string srgb = make_srgb_profile();
    const Profile to(
        cmsOpenProfileFromMemTHR(context, srgb.data(), static_cast<cmsUInt32Number>(srgb.size())));
    if (!to)
        return;
    transform->handle = cmsCreateTransformTHR(
        context, from.get(), row_format(source), to.get(),
        source.has_alpha ? TYPE_RGBA_8 : TYPE_RGB_8, INTENT_RELATIVE_COLORIMETRIC,
        cmsFLAGS_BLACKPOINTCOMPENSATION | (source.has_alpha ? cmsFLAGS_COPY_ALPHA : 0));
    if (transform->handle)
        transform_ = std::move(transform);
}

ToSrgb::~ToSrgb() = default;

void ToSrgb::convert(std::span<const std::uint16_t> row, std::span<std::uint8_t> pixels) const {
    const std::size_t count = row.size() / source_.components();
    if (transform_ && source_.component_size == 2)
        return cmsDoTransform(transform_->handle, row.data(), pixels.data(),
                              static_cast<cmsUInt32Number>(count));
    if (transform_) {
        std::vector<std::uint8_t> bytes(row.size());
        std::ranges::transform(row, bytes.begin(), to_8_bits);
        return cmsDoTransform(transform_->handle, bytes.data(), pixels.data(),
                              static_cast<cmsUInt32Number>(count));
    }
    const std::size_t components = source_.has_alpha ? 4 : 3;
    for (std::size_t i = 0; i < count; ++i)
        convert_pixel(source_, row.data() + i * source_.components(),
                      pixels.data() + i * components);
}

} // namespace vell::pictures
