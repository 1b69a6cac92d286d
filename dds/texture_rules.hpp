// The "Texture" rule of one source as a plain record: every decision of a conversion that a person can steer.
#pragma once

#include "dds/output_line_sink.hpp"
#include "processor/host/logical_path.hpp"
#include "processor/host/rule_cache.hpp"

#include <QString>

#include <cstdint>

enum class COMPRESSOR_TYPE : std::int32_t { ATI = 0, NVIDIA = 1, UNKNOWN = 2 };

struct TEXTURE_RULES {
    COMPRESSOR_TYPE compressor = COMPRESSOR_TYPE::NVIDIA;
    bool mipmaps = true;
    bool normal_map = false;
    bool parallax_map = false;
    QString compression_format = QStringLiteral("dxt1");  ///< lower case, unless an override gave it
    bool need_gamma_correction = false;
    float average_grey = 0.005F;
    std::int32_t min_alpha = 5;
    std::int32_t max_alpha = 250;
    bool premultiplied_alpha = false;
    QString mip_filter = QStringLiteral("box");  ///< lower case
    bool use_hq_one_bit_alpha = false;
    bool fastest_quality = false;
    std::int32_t drop_mips = 0;
    std::int32_t max_size = 65536;  ///< at least 1
};

/// "ati" or "nvidia" in any case; an empty name is "nvidia". Any other is reported and gives UNKNOWN.
COMPRESSOR_TYPE parse_compressor_type(OUTPUT_LINE_SINK& sink, QString const& name);

/// Fills `record` from the rule "Texture" of the path. False, after a line that says why, when there is no such rule or
/// its compressor is unknown. A value of the wrong kind is no error: it reads as false, 0 or an empty string.
bool read_texture_rules(OUTPUT_LINE_SINK& sink, RULE_CACHE const& rules, LOGICAL_PATH const& path,
                        TEXTURE_RULES& record);
