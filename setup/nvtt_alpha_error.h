// The inner step of NVIDIA Texture Tools' search for the alpha of DXT5 at its highest quality: the square error of a block
// for one pair of endpoints, asked for thousands of times a block. setup/nvtt puts it in the place of the library's own,
// which compares texel by texel. This form works on a whole block at a time, in the vectors that GCC and Clang have for
// every processor; its result is the same whole number, so the textures are the same to the byte.
#pragma once

typedef unsigned char ZAB_BYTES __attribute__((vector_size(16)));
typedef unsigned short ZAB_SQUARES __attribute__((vector_size(16)));
typedef unsigned int ZAB_WORDS __attribute__((vector_size(16)));

/// Sum over 16 texels, words with alpha in their highest byte, of the square distance to the nearest entry of the palette.
inline unsigned int zab_alpha_error(unsigned char const (&palette)[8], void const* texels) {
    ZAB_WORDS of[4];
    __builtin_memcpy(of, texels, sizeof of);
    // Every byte is one texel's alpha; for a sum their order does not matter.
    ZAB_BYTES const alphas =
        (ZAB_BYTES)((of[0] >> 24) | (of[1] >> 16 & 0xff00u) | (of[2] >> 8 & 0xff0000u) | (of[3] & 0xff000000u));
    ZAB_BYTES nearest = ZAB_BYTES{} + static_cast<unsigned char>(255);
    for (int entry = 0; entry < 8; ++entry) {
        ZAB_BYTES const value = ZAB_BYTES{} + palette[entry];
        ZAB_BYTES const high = alphas > value ? alphas : value;
        ZAB_BYTES const low = alphas < value ? alphas : value;
        ZAB_BYTES const distance = high - low;
        nearest = nearest < distance ? nearest : distance;
    }
    // The even and the odd bytes, and their squares, which fit sixteen bits.
    ZAB_SQUARES even = (ZAB_SQUARES)nearest & static_cast<unsigned short>(255);
    ZAB_SQUARES odd = (ZAB_SQUARES)nearest >> 8;
    even *= even;
    odd *= odd;
    ZAB_WORDS const sums = ((ZAB_WORDS)even & 0xffffu) + ((ZAB_WORDS)even >> 16) + ((ZAB_WORDS)odd & 0xffffu) +
                           ((ZAB_WORDS)odd >> 16);
    return sums[0] + sums[1] + sums[2] + sums[3];
}
