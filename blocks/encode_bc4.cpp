// Both kinds of palette are searched and the better one is packed.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "blocks/encode_bc4.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

#include "blocks/encode_bc4.hpp"
#include "blocks/encode_bc4_search-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks {
namespace HWY_NAMESPACE {

HWY_INLINE void load_values(std::uint32_t const (&texels)[16][batch_blocks], std::size_t lane,
                            BC4_SETTINGS const& settings, VALUE_BLOCKS& blocks) {
    blocks.top = set(settings.is_signed ? 254 : 255);
    blocks.unit = set(settings.is_signed ? 254.0f / 255 : 1);
    blocks.inverse_unit = set(settings.is_signed ? 255.0f / 254 : 1);
    for (int i = 0; i < 16; ++i) {
        auto const packed = hn::Load(DU(), &texels[i][lane]);
        V value;
        switch (settings.channel) {
        case 0:
            value = unpack_channel<0>(packed);
            break;
        case 1:
            value = unpack_channel<8>(packed);
            break;
        case 2:
            value = unpack_channel<16>(packed);
            break;
        default:
            value = unpack_channel<24>(packed);
            break;
        }
        blocks.values[i] = settings.is_signed ? hn::Mul(value, set(254.0f / 255)) : value;
    }
}

struct PACKED_INTERVAL {
    VI first;
    VI second;
    /// Indices of eight texels each, three bits a texel.
    VI indices[2];
};

/// Eight entries: high first, so the values run downwards. Six: low first, then upwards, then the ends of the range.
template <int entries>
HWY_INLINE PACKED_INTERVAL pack(VALUE_BLOCKS const& blocks, INTERVAL const& interval) {
    PACKED_INTERVAL packed;
    auto const low = hn::ConvertTo(DI(), interval.low);
    auto const high = hn::ConvertTo(DI(), interval.high);
    packed.first = entries == 8 ? high : low;
    packed.second = entries == 8 ? low : high;
    V const scale = steps_per_value<entries>(interval);
    V const step = hn::Mul(hn::Sub(interval.high, interval.low), set(1.0f / interval_steps<entries>));
    V const last = set(interval_steps<entries>);
    for (int half = 0; half < 2; ++half) {
        packed.indices[half] = hn::Set(DI(), 0);
        for (int i = 7; i >= 0; --i) {
            V const value = blocks.values[half * 8 + i];
            V const along = index_in<entries>(interval, scale, value);
            V const ordered = entries == 8 ? hn::Sub(last, along) : along;
            // The two endpoints come first in the palette, then what lies between.
            V index = hn::IfThenElse(hn::Eq(ordered, set(0)), ordered,
                                     hn::IfThenElse(hn::Eq(ordered, last), set(1), hn::Add(ordered, set(1))));
            if constexpr (entries == 6) {
                V const difference = hn::Abs(hn::Sub(hn::Sub(value, interval.low), hn::Mul(along, step)));
                V const to_top = hn::Sub(blocks.top, value);
                M const is_end = hn::Le(hn::Min(value, to_top), difference);
                index = hn::IfThenElse(is_end, hn::IfThenElse(hn::Lt(value, to_top), set(6), set(7)), index);
            }
            packed.indices[half] = hn::Or(hn::ShiftLeft<3>(packed.indices[half]), hn::ConvertTo(DI(), index));
        }
    }
    return packed;
}

template <MEASURE measure>
void search_batch(BLOCK_BATCH const& batch, BC4_SETTINGS const& settings, std::uint64_t (&out)[batch_blocks]) {
    BC4_SEARCH const search = bc4_search(settings.effort);
    std::size_t const lanes = hn::Lanes(D());
    for (std::size_t lane = 0; lane < batch_blocks; lane += lanes) {
        VALUE_BLOCKS blocks;
        load_values(batch.texels, lane, settings, blocks);
        INTERVAL_FIT const eight = search_interval<8, measure>(blocks, search);
        PACKED_INTERVAL packed = pack<8>(blocks, eight.interval);
        // Where eight entries leave no error there is nothing to better.
        if (!hn::AllTrue(D(), hn::Eq(eight.error, set(0)))) {
            INTERVAL_FIT const six = search_interval<6, measure>(blocks, search);
            PACKED_INTERVAL const packed_six = pack<6>(blocks, six.interval);
            auto const better = hn::RebindMask(DI(), hn::Lt(six.error, eight.error));
            packed.first = hn::IfThenElse(better, packed_six.first, packed.first);
            packed.second = hn::IfThenElse(better, packed_six.second, packed.second);
            for (int half = 0; half < 2; ++half) {
                packed.indices[half] = hn::IfThenElse(better, packed_six.indices[half], packed.indices[half]);
            }
        }
        HWY_ALIGN std::int32_t stored[4][batch_blocks];
        hn::Store(packed.first, DI(), stored[0]);
        hn::Store(packed.second, DI(), stored[1]);
        hn::Store(packed.indices[0], DI(), stored[2]);
        hn::Store(packed.indices[1], DI(), stored[3]);
        int const zero = settings.is_signed ? 127 : 0;
        for (std::size_t i = 0; i < lanes; ++i) {
            auto const first = static_cast<std::uint8_t>(stored[0][i] - zero);
            auto const second = static_cast<std::uint8_t>(stored[1][i] - zero);
            out[lane + i] = first | std::uint64_t{second} << 8 | static_cast<std::uint64_t>(stored[2][i]) << 16 |
                            static_cast<std::uint64_t>(stored[3][i]) << 40;
        }
    }
}

void encode_bc4_batch(BLOCK_BATCH const& batch, BC4_SETTINGS const& settings, std::uint64_t (&out)[batch_blocks]) {
    auto const encode =
        settings.effort == EFFORT::fast ? &search_batch<MEASURE::fractions> : &search_batch<MEASURE::both>;
    encode(batch, settings, out);
}

}  // namespace HWY_NAMESPACE
}  // namespace blocks
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace blocks {

HWY_EXPORT(encode_bc4_batch);

void encode_bc4(BLOCK_BATCH const& batch, BC4_SETTINGS const& settings, std::uint64_t (&out)[batch_blocks]) {
    HWY_DYNAMIC_DISPATCH(encode_bc4_batch)(batch, settings, out);
}

}  // namespace blocks
#endif
