// The gloss map of sources that only the old rule governs: gloss in red, its level in green, the faction mask in blue.
// The tool-data builder library does the work.
#pragma once

#include "combine/stem_action.hpp"

class ACTION_LEVELLED_GLOSS_MAP : public STEM_ACTION {
public:
    ACTION_LEVELLED_GLOSS_MAP(PHYSICAL_PATH const& stem, PROCESSOR_INTERFACE& processor);

    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override {
        return run_with([&] { return make_target(files, rules); }, files);
    }

private:
    bool make_target(FILE_MAP const& files, RULE_CACHE const& rules);
};
