// Which instruction sets the encoders may use. They take the best that the machine has; a lower one is for checking
// that the bytes do not depend on it, and for machines whose best one is slow or broken.
#pragma once

#include <string_view>

namespace blocks {

/// Nothing better than "scalar", "sse4", "avx2" or "avx512" (those that the machine lacks change nothing). Holds for
/// the whole process from now on and cannot be taken back; an encoder must not be running. False for any other word.
bool limit_simd(std::string_view level);

}  // namespace blocks
