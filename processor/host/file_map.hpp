// The short name for the table that nearly every operation of the contract takes.
#pragma once

#include "processor/host/file_entry.hpp"
#include "processor/host/lockable_map.hpp"
#include "processor/host/logical_path.hpp"

using FILE_MAP = LOCKABLE_MAP<LOGICAL_PATH, FILE_ENTRY*>;
