// How a host keeps the plug-in's encoders from the newer instruction sets of its machine: through a function that the
// plug-in library exports under the name below. The plug-in itself reads no environment.
#pragma once

inline constexpr char const* limit_simd_name = "zab_limit_simd";

/// Nothing better than "scalar", "sse4", "avx2" or "avx512" from here on; false for any other word. Called before
/// actions run.
using LIMIT_SIMD = bool(char const* level);
