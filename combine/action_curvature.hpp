// Curvature in red and translucency in green, for skin and foliage.
#pragma once

#include "combine/stem_action.hpp"

class ACTION_CURVATURE : public STEM_ACTION {
public:
    ACTION_CURVATURE(PHYSICAL_PATH const& stem, PROCESSOR_INTERFACE& processor);

    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override {
        return run_with([&] { return make_target(files, rules); }, files);
    }

private:
    bool make_target(FILE_MAP const& files, RULE_CACHE const& rules);
};
