// What the encoders that take batches of packed texels need beyond lanes-inl.hpp.
#include "hwy/highway.h"

#include "blocks/block_batch.hpp"
#include "blocks/lanes-inl.hpp"

#if defined(BLOCKS_BATCH_LANES_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_BATCH_LANES_INL_HPP
#undef BLOCKS_BATCH_LANES_INL_HPP
#else
#define BLOCKS_BATCH_LANES_INL_HPP
#endif

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

using DI = hn::RebindToSigned<D>;
using VI = hn::Vec<DI>;

static_assert(batch_blocks % max_lanes == 0);

/// The nearest integer, ties to even, for magnitudes below 2^22: adding 1.5 · 2^23 leaves no bits for a fraction.
/// Quicker than the instruction made for it, and there are millions of them.
HWY_INLINE V round(V value) {
    V const shift = set(12582912.0f);
    return hn::Sub(hn::Add(value, shift), shift);
}

/// Channel `shift / 8` of packed texels, 0 … 255.
template <int shift>
HWY_INLINE V unpack_channel(VU texels) {
    VU const byte = hn::And(hn::ShiftRight<shift>(texels), hn::Set(DU(), 255u));
    return hn::ConvertTo(D(), hn::BitCast(DI(), byte));
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
