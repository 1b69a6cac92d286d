// The last step of every conversion that is made for a source: the rule says where its target goes.
#pragma once

#include "processor/host/action_convert.hpp"

#include <memory>
#include <vector>

/// Sets the target's folder and base name as the rule's "TargetPath" and "TargetBaseName" say, and appends the action
/// to `result`; without a "TargetPath" the action gets an error in place of a folder. No action: nothing.
void apply_target_rule(std::unique_ptr<ACTION_CONVERT> action, RULE const& rule,
                       std::vector<std::unique_ptr<ACTION_INTERFACE>>& result, QString const& working_directory,
                       LOGICAL_PATH const& logical, PHYSICAL_PATH const& physical);
