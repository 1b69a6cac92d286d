// How much memory the program held at most since a moment, as the Linux kernel counts it (proc(5): clear_refs, which
// begins what getrusage(2) tells anew).
#pragma once

#include <cstdint>
#include <optional>

namespace tool {

/// Begins a new measurement.
void reset_peak_memory();
/// The most bytes resident since the last reset; nothing where the system does not say.
std::optional<std::uint64_t> peak_memory();

}  // namespace tool
