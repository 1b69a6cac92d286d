// The nvidia back-end: a working image becomes a DDS file through NVIDIA Texture Tools, mip chain included.
#pragma once

#include "dds/compression_format.hpp"
#include "dds/output_line_sink.hpp"
#include "platform/image_loader/image.hpp"
#include "processor/host/physical_path.hpp"

#include <QString>

#include <vector>

/// What the nvidia and the ATI back-end are told besides the image.
struct BACK_END_SETTINGS {
    NVTT_FORMAT format = NVTT_FORMAT::dxt5;
    bool normal_map = false;
    bool mipmaps = true;
    bool need_gamma_correction = false;
    float input_gamma = 1.0F;
    float output_gamma = 2.2F;
    QString mip_filter;
    bool fastest_quality = false;
    QString l8_name;
};

/// Writes `target`. `image` has four 8-bit channels, alpha last, and may have mip levels of its own; `chain` holds
/// ready levels below its top, or nothing. The written file is held against its own header. False after the library's
/// errors went to the sink, one line each; a file may then be left behind. The library is used on the calling thread
/// and nothing is shared between calls.
bool compress_with_nvtt(OUTPUT_LINE_SINK& sink, PHYSICAL_PATH const& target, BACK_END_SETTINGS const& settings,
                        IMAGE_LOADER::IMAGE const& image, std::vector<IMAGE_LOADER::IMAGE> const& chain);
