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

/// Limits of the endpoints in each channel of each block, in units.
struct BC6H_BOUNDS {
    alignas(64) float low[3][max_lanes];
    alignas(64) float high[3][max_lanes];

    HWY_INLINE void keep(ENDS<3>& ends) const {
        for (std::size_t c = 0; c < 3; ++c) {
            V const lowest = hn::Load(D(), low[c]);
            V const highest = hn::Load(D(), high[c]);
            ends.a[c] = clamp(ends.a[c], lowest, highest);
            ends.b[c] = clamp(ends.b[c], lowest, highest);
        }
    }
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

    /// The code below a value; the one above it is next. Codes stand for the middles of steps, but for 16 bits.
    HWY_INLINE V code_below(V value) const {
        V const steps = hn::Mul(value, inverse_step);
        if constexpr (is_signed)
            return hn::Floor(exact ? steps : hn::Sub(steps, hn::CopySign(set(0.5f), value)));
        else
            return hn::Floor(exact ? steps : hn::Sub(steps, set(0.5f)));
    }

    HWY_INLINE V within(V code) const { return clamp(code, is_signed ? hn::Neg(top_code) : zero(), top_code); }

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

/// Brings the endpoints of `subsets` subsets to what `mode` can store: in each channel to the pair of neighbouring
/// codes that costs least. Differences from the first endpoint that are too large for the mode are then cut short.
/// Gives the growth of the squared error.
template <bool is_signed, std::size_t subsets>
HWY_INLINE V quantise_ends(BC6H_MODE const& mode, BC6H_ORIGIN const& origin, ENDS<3> const (&ends)[subsets],
                           ERROR_FORM const (&form)[subsets], SUBJECT<3> const& subject, ENDS<3> (&out)[subsets]) {
    BC6H_SCALE<is_signed> const scale(mode.endpoint_bits);
    V total = zero();
    for (std::size_t c = 0; c < 3; ++c) {
        V const zero_point = origin.load(c);
        float const reach = static_cast<float>(1u << (mode.delta_bits[c] - 1));
        auto const to_scale = [&](V end) {
            return hn::Mul(hn::Add(end, zero_point), set(bc6h_unit));
        };
        auto const to_units = [&](V code) {
            return hn::Sub(hn::Mul(scale.decode(code), set(1.0f / bc6h_unit)), zero_point);
        };
        V base = zero();
        V channel_total = zero();
        for (std::size_t s = 0; s < subsets; ++s) {
            V const below_a = scale.code_below(to_scale(ends[s].a[c]));
            V const below_b = scale.code_below(to_scale(ends[s].b[c]));
            V code_a = zero(), code_b = zero();
            V cost = set(3e38f);
            for (float const up_a : {0.0f, 1.0f})
                for (float const up_b : {0.0f, 1.0f}) {
                    V const a = scale.within(hn::Add(below_a, set(up_a)));
                    V const b = scale.within(hn::Add(below_b, set(up_b)));
                    V const growth =
                        form[s].growth(hn::Sub(to_units(a), ends[s].a[c]), hn::Sub(to_units(b), ends[s].b[c]));
                    M const less = hn::Lt(growth, cost);
                    cost = hn::Min(growth, cost);
                    code_a = hn::IfThenElse(less, a, code_a);
                    code_b = hn::IfThenElse(less, b, code_b);
                }
            if (s == 0)
                base = code_a;
            if (mode.transformed) {
                auto const cut = [&](V code) {
                    return hn::Add(base, clamp(hn::Sub(code, base), set(-reach), set(reach - 1.0f)));
                };
                code_a = cut(code_a);
                code_b = cut(code_b);
            }
            V const a = out[s].a[c] = to_units(code_a);
            V const b = out[s].b[c] = to_units(code_b);
            V const growth = form[s].growth(hn::Sub(a, ends[s].a[c]), hn::Sub(b, ends[s].b[c]));
            channel_total = hn::Add(channel_total, growth);
        }
        total = hn::Add(total, hn::Mul(channel_total, subject.weight(c)));
    }
    return total;
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
