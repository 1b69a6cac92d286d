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

/// Channel `shift / 8` of packed texels, 0 … 255.
template <int shift>
HWY_INLINE V unpack_channel(VU texels) {
    VU const byte = hn::And(hn::ShiftRight<shift>(texels), hn::Set(DU(), 255u));
    return hn::ConvertTo(D(), hn::BitCast(DI(), byte));
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
