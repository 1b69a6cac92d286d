// Endpoints as BC6H can store them, one block a lane. Texels and endpoints are held in units of 1/64 of the decoder's
// 16-bit scale and relative to a texel of the block, so that single precision is enough for products of them.
#if defined(BLOCKS_BC6H_ENDPOINTS_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_BC6H_ENDPOINTS_INL_HPP
#undef BLOCKS_BC6H_ENDPOINTS_INL_HPP
#else
#define BLOCKS_BC6H_ENDPOINTS_INL_HPP
#endif

#include "blocks/bc6h_modes.hpp"
#include "blocks/line_fit-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

inline constexpr float bc6h_unit = 64.0f;

/// What counts as zero in each channel of each block, in units.
struct BC6H_ORIGIN {
    alignas(64) float value[3][max_lanes];

    HWY_INLINE V load(std::size_t channel) const { return hn::Load(D(), value[channel]); }
};

/// The codes of `bits` bits and what a decoder makes of them.
template <bool is_signed>
struct BC6H_SCALE {
    V step;
    V inverse_step;
    V top_code;
    V top_value;
    bool exact;  ///< 16 bits: codes are values

    HWY_INLINE explicit BC6H_SCALE(std::uint32_t bits) {
        float const width = static_cast<float>(1u << (16 - bits));
        step = set(width);
        inverse_step = set(1.0f / width);
        top_code = set(static_cast<float>((1u << (bits - is_signed)) - 1));
        top_value = set(is_signed ? 32767.0f : 65535.0f);
        exact = bits == 16;
    }

    HWY_INLINE V encode(V value) const {
        if constexpr (is_signed) {
            V const size = hn::Mul(hn::Abs(value), inverse_step);
            return hn::CopySign(hn::Min(exact ? round_half_up(size) : hn::Floor(size), top_code), value);
        } else {
            V const size = hn::Mul(value, inverse_step);
            return clamp(exact ? round_half_up(size) : hn::Floor(size), zero(), top_code);
        }
    }

    HWY_INLINE V decode(V code) const {
        if (exact)
            return code;
        V const size = is_signed ? hn::Abs(code) : code;
        V value = hn::Mul(hn::Add(size, set(0.5f)), step);
        value = hn::IfThenElse(hn::Ge(size, top_code), top_value, value);
        value = hn::IfThenElse(hn::Eq(size, zero()), zero(), value);
        return is_signed ? hn::CopySign(value, code) : value;
    }
};

/// Brings the endpoints of `subsets` subsets to what `mode` can store. Differences from the first endpoint that are too
/// large for the mode are cut short. Gives an estimate of the squared error that the change of the endpoints brings to
/// texels spread evenly between them.
template <bool is_signed, std::size_t subsets>
HWY_INLINE V quantise_ends(BC6H_MODE const& mode, BC6H_ORIGIN const& origin, ENDS<3> const (&ends)[subsets],
                           V const (&count)[subsets], ENDS<3> (&out)[subsets]) {
    BC6H_SCALE<is_signed> const scale(mode.endpoint_bits);
    V error = zero();
    for (std::size_t c = 0; c < 3; ++c) {
        V const zero_point = origin.load(c);
        float const reach = static_cast<float>(1u << (mode.delta_bits[c] - 1));
        V base = zero();
        auto const quantise = [&](V end, bool first) {
            V code = scale.encode(hn::Mul(hn::Add(end, zero_point), set(bc6h_unit)));
            if (first)
                base = code;
            else if (mode.transformed)
                code = hn::Add(base, clamp(hn::Sub(code, base), set(-reach), set(reach - 1.0f)));
            return hn::Sub(hn::Mul(scale.decode(code), set(1.0f / bc6h_unit)), zero_point);
        };
        for (std::size_t s = 0; s < subsets; ++s) {
            V const a = out[s].a[c] = quantise(ends[s].a[c], s == 0);
            V const b = out[s].b[c] = quantise(ends[s].b[c], false);
            V const change_a = hn::Sub(a, ends[s].a[c]);
            V const change_b = hn::Sub(b, ends[s].b[c]);
            V const sum = hn::Add(hn::Mul(change_a, hn::Add(change_a, change_b)), square(change_b));
            error = hn::Add(error, hn::Mul(sum, count[s]));
        }
    }
    return error;
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
