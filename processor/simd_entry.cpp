// The function behind `limit_simd_name`.
#include "processor/host/simd_entry.hpp"

#include "blocks/simd_level.hpp"

#include <QtGlobal>

#include <type_traits>

extern "C" Q_DECL_EXPORT bool zab_limit_simd(char const* level) {
    return blocks::limit_simd(level);
}

static_assert(std::is_same_v<decltype(zab_limit_simd), LIMIT_SIMD>);
