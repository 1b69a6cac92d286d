// Up to four masks of one stem in the channels of one texture, for sources that only the old rule governs. The
// tool-data builder library does the work: DXT5 with a fourth mask, DXT1 without.
#pragma once

#include "combine/mask_names.hpp"
#include "combine/stem_action.hpp"

class ACTION_COLOUR_MASK : public STEM_ACTION {
public:
    /// `numbered`: "_mask1.tga" to "_mask4.tga"; else the colour masks.
    ACTION_COLOUR_MASK(PHYSICAL_PATH const& stem, bool numbered, PROCESSOR_INTERFACE& processor);

    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override {
        return run_with([&] { return make_target(files, rules); }, files);
    }

private:
    /// Whether there is a fourth mask, the file table decides, not the disk.
    bool make_target(FILE_MAP const& files, RULE_CACHE const& rules);
    bool numbered_;
};
