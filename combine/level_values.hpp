// Levelling: grey values stretched from one range to another, as the rule "TextureLevelling" of their source says, so
// that masks painted or scanned in any range fill the channel that they go to.
#pragma once

#include "dds/output_line_sink.hpp"
#include "processor/host/logical_path.hpp"
#include "processor/host/rule_cache.hpp"

#include <cstdint>
#include <span>

/// Levels `values` in place: input bounds to output bounds, linearly, what lies outside cut off. A negative input bound
/// stands for the smallest or the largest value that there is. Without a rule nothing changes. When the rule's values
/// are of no use, one line says why, nothing changes and `failed` becomes true; it never becomes false.
void level_values(OUTPUT_LINE_SINK& sink, std::span<std::uint8_t> values, LOGICAL_PATH const& source,
                  RULE_CACHE const& rules, bool& failed);
