// Up to four masks of one stem in the channels of one texture, compressed as the rule of the first mask that has one
// says.
#pragma once

#include "combine/mask_names.hpp"
#include "combine/stem_action.hpp"

class ACTION_MASK : public STEM_ACTION {
public:
    /// `numbered`: "_mask1.tga" to "_mask4.tga"; else the colour masks.
    ACTION_MASK(PHYSICAL_PATH const& stem, bool numbered, PROCESSOR_INTERFACE& processor);

    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override {
        return run_with([&] { return make_target(files, rules); }, files);
    }

private:
    /// Whether there is a fourth mask, the disk decides, not the file table.
    bool make_target(FILE_MAP const& files, RULE_CACHE const& rules);
    bool read_rules(RULE_CACHE const& rules, TEXTURE_RULES& record);

    bool numbered_;
};
