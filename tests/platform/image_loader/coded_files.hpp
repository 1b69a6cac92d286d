// PNG and TIF files put together byte by byte, so that a test says exactly what stands in them and nothing but the
// loader under test has to be trusted. Both are written without compression.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace platform_test {

using BYTES = std::vector<std::uint8_t>;

struct PNG_FILE {
    std::uint32_t width = 1;
    std::uint32_t height = 1;
    std::uint8_t bits = 8;
    std::uint8_t colour_type = 6;  ///< 0 grey, 2 RGB, 3 palette, 4 grey and alpha, 6 RGBA
    BYTES palette;                 ///< PLTE
    BYTES transparency;            ///< tRNS
    bool with_gamma_1 = false;     ///< a gAMA chunk of 1.0
    BYTES rows;                    ///< each row behind a filter byte 0
};
BYTES make_png(PNG_FILE const& png);

struct TIF_FILE {
    std::uint32_t width = 1;
    std::uint32_t height = 1;
    std::uint16_t bits = 8;
    std::uint16_t channels = 1;
    std::uint16_t photometric = 1;    ///< 0 white is zero, 1 black is zero, 2 RGB, 5 CMYK
    std::uint16_t sample_format = 1;  ///< 1 unsigned, 3 float
    bool has_alpha = false;           ///< the last channel is unassociated alpha
    BYTES texels;                     ///< little-endian
    bool tells_channels = true;
    bool is_64 = false;  ///< offsets of 64 bits
    std::uint16_t compression = 1;
};
BYTES make_tif(TIF_FILE const& tif);

}  // namespace platform_test
