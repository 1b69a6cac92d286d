// Smoothness in red, metalness in green and, where there is one, the faction mask in blue.
#pragma once

#include "combine/stem_action.hpp"

class ACTION_MATERIAL_MAP : public STEM_ACTION {
public:
    ACTION_MATERIAL_MAP(PHYSICAL_PATH const& stem, PROCESSOR_INTERFACE& processor);

    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override {
        return run_with([&] { return make_target(files, rules); }, files);
    }

private:
    bool make_target(FILE_MAP const& files, RULE_CACHE const& rules);
};
