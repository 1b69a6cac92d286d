// What the nvidia and the ATI back-end are told besides the image.
#pragma once

#include "dds/compression_format.hpp"

#include <QString>

struct BACK_END_SETTINGS {
    NVTT_FORMAT format = NVTT_FORMAT::dxt5;
    QString format_name;  ///< as the rule has it, for messages
    bool uncompressed_with_alpha = false;
    bool normal_map = false;
    bool mipmaps = true;
    bool need_gamma_correction = false;
    float input_gamma = 1.0F;
    float output_gamma = 2.2F;
    QString mip_filter;
    bool fastest_quality = false;
    QString l8_name;
};
