// The build action that turns one source image into one DDS texture, as the "Texture" rule of the source says.
#pragma once

#include "dds/action_line_sink.hpp"
#include "processor/host/action_convert.hpp"

class ACTION_DDS_N : public ACTION_CONVERT, public ACTION_LINE_SINK<ACTION_DDS_N> {
public:
    using ACTION_LINE_SINK::add_output_line;

    ACTION_DDS_N(PHYSICAL_PATH const& source, PROCESSOR_INTERFACE& processor);
    /// A second texture of the same source, with a target of its own. Each override that is not empty takes the place
    /// of a rule value: the compressor's name, the format's name (taken as it is, no lower case), and whether alpha is
    /// premultiplied ("true" exactly; anything else means no).
    ACTION_DDS_N(PHYSICAL_PATH const& source, PROCESSOR_INTERFACE& processor, PHYSICAL_PATH const& target,
                 QString compressor_override, QString format_override, QString premultiplied_override);

    QString get_name(bool detailed) override;
    /// A source without usable rules is reported, makes no file, and counts as success: deliberate.
    bool convert(PHYSICAL_PATH const& source, PHYSICAL_PATH const& target, RULE_CACHE const& rules,
                 FILE_MAP const& files) override;

private:
    bool convert_source(PHYSICAL_PATH const& source, PHYSICAL_PATH const& target, RULE_CACHE const& rule_cache);

    QString compressor_override_;
    QString format_override_;
    QString premultiplied_override_;
};
