// The conversion of a TGA to DDS for sources that only the older rule "TextureOld" governs: the tool-data builder
// library's texture compressor does all of it.
#pragma once

#include "processor/host/action_convert.hpp"

class ACTION_DDS : public ACTION_CONVERT {
public:
    /// With `forbid_dxt1` the texture always has full alpha.
    ACTION_DDS(PHYSICAL_PATH const& source, PROCESSOR_INTERFACE& processor, bool forbid_dxt1);

    QString get_name(bool detailed) override;
    /// The library writes beside the source, under the source's name with ".dds", and the result is moved from there.
    /// Whatever stood there before is removed, also a DDS that an artist put beside the TGA. The lines of a failure are
    /// the library's; a result that cannot be moved fails without one, as the action adds none of its own.
    bool convert(PHYSICAL_PATH const& source, PHYSICAL_PATH const& target, RULE_CACHE const& rules,
                 FILE_MAP const& files) override;

private:
    bool forbid_dxt1_;
};
