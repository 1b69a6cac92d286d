// The working folder as a host keeps it open: what writes outputs, in the framework and in every plug-in that takes it,
// stays below it.
#pragma once

#include "processor/host/export.hpp"
#include "processor/host/output_root_entry.hpp"

namespace framework {

/// For the framework's own outputs.
ZAB_SHARED_API SET_OUTPUT_ROOT set_output_root;

}  // namespace framework
