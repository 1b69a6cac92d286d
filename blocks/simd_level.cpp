#include "blocks/simd_level.hpp"

#include <cstdint>

#include "hwy/targets.h"

namespace blocks {

namespace {

/// Highway's better targets have the lower bits, so all below one are those better than it.
void allow_up_to(std::int64_t target) {
    hwy::DisableTargets(target - 1);
}

}  // namespace

bool limit_simd(std::string_view level) {
    if (level == "scalar") {
        allow_up_to(HWY_EMU128);
        return true;
    }
#if HWY_ARCH_X86
    if (level == "sse4" || level == "avx2" || level == "avx512") {
        allow_up_to(level == "sse4" ? HWY_SSE4 : level == "avx2" ? HWY_AVX2 : HWY_AVX3);
        return true;
    }
#endif
    return false;
}

}  // namespace blocks
