// Gloss in red and, for units that take the colours of their faction, the faction mask in blue.
#pragma once

#include "combine/stem_action.hpp"

class ACTION_GLOSS_MAP : public STEM_ACTION {
public:
    ACTION_GLOSS_MAP(PHYSICAL_PATH const& stem, PROCESSOR_INTERFACE& processor);

    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override {
        return run_with([&] { return make_target(files, rules); }, files);
    }

private:
    bool make_target(FILE_MAP const& files, RULE_CACHE const& rules);
};
