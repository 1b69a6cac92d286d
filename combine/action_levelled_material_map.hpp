// The material map of sources that only the old rule governs: smoothness in red, metalness in green, nothing in blue,
// and the faction mask in alpha, where the newer material map has it in blue. The tool-data builder library does the
// work.
#pragma once

#include "combine/stem_action.hpp"

class ACTION_LEVELLED_MATERIAL_MAP : public STEM_ACTION {
public:
    ACTION_LEVELLED_MATERIAL_MAP(PHYSICAL_PATH const& stem, PROCESSOR_INTERFACE& processor);

    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override {
        return run_with([&] { return make_target(files, rules); }, files);
    }

private:
    bool make_target(FILE_MAP const& files, RULE_CACHE const& rules);
};
