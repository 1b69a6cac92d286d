// The normal map of a billboard with its displacement in alpha: one texture for trees and shrubs that are far away.
#pragma once

#include "combine/stem_action.hpp"

class ACTION_BILLBOARD : public STEM_ACTION {
public:
    ACTION_BILLBOARD(PHYSICAL_PATH const& stem, PROCESSOR_INTERFACE& processor);

    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override {
        return run_with([&] { return make_target(files, rules); }, files);
    }

private:
    /// No rule is read: every billboard of a game is compressed alike.
    bool make_target(FILE_MAP const& files, RULE_CACHE const& rules);
};
