// The few vector operations that the encoders share beyond Highway's own. Only operations that IEEE 754 defines to the
// last bit are used, and never a fused multiply-add, so that every target computes the same numbers.
#include <hwy/highway.h>

#include "blocks/block_batch.hpp"

#if defined(BLOCKS_SIMD_FLOATS_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_SIMD_FLOATS_INL_HPP
#undef BLOCKS_SIMD_FLOATS_INL_HPP
#else
#define BLOCKS_SIMD_FLOATS_INL_HPP
#endif

HWY_BEFORE_NAMESPACE();
namespace blocks {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// One block a lane; never more lanes than a batch has blocks.
using FLOATS = hn::CappedTag<float, batch_blocks>;
using INTS = hn::RebindToSigned<FLOATS>;
using WORDS = hn::RebindToUnsigned<FLOATS>;
using V = hn::Vec<FLOATS>;
using M = hn::Mask<FLOATS>;

HWY_INLINE V set(float value) {
    return hn::Set(FLOATS(), value);
}

HWY_INLINE V clamp(V value, V lowest, V highest) {
    return hn::Min(hn::Max(value, lowest), highest);
}

/// The nearest integer, ties to even, for magnitudes below 2^22: adding 1.5 · 2^23 leaves no bits for a fraction.
HWY_INLINE V round(V value) {
    V const shift = set(12582912.0f);
    return hn::Sub(hn::Add(value, shift), shift);
}

HWY_INLINE V square(V value) {
    return hn::Mul(value, value);
}

/// `a` where it is less than `b` by more than nothing, so that a later candidate must be better to replace an earlier
/// one.
HWY_INLINE V select(M mask, V yes, V no) {
    return hn::IfThenElse(mask, yes, no);
}

/// Channel `shift / 8` of packed texels, 0 … 255.
template <int shift>
HWY_INLINE V unpack_channel(hn::Vec<WORDS> texels) {
    auto const byte = hn::And(hn::ShiftRight<shift>(texels), hn::Set(WORDS(), 255u));
    return hn::ConvertTo(FLOATS(), hn::BitCast(INTS(), byte));
}

}  // namespace HWY_NAMESPACE
}  // namespace blocks
HWY_AFTER_NAMESPACE();

#endif
