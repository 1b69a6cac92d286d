// How a host keeps a plug-in's targets in the working folder, whatever becomes of the folder's name while a build runs,
// and learns what has been written. The plug-in library exports a function under the name below, which a host may call
// before it runs actions. Without it, paths are what the system takes them for.
#pragma once

inline constexpr char const* set_output_root_name = "zab_set_output_root";

/// Called with every target that is whole and about to take its place, on the action's thread: the path of that place,
/// and a descriptor to read the file with, which stays the caller's.
using OUTPUT_LISTENER = void(char const* target, int descriptor);

/// `path` is the absolute path of a folder, without '/' at its end, and `descriptor` the open folder, which the host
/// keeps open as long as actions run. Targets whose paths begin with this one are reached through the descriptor, and
/// never outside the folder. An empty path: no root. `written` may be null.
using SET_OUTPUT_ROOT = void(char const* path, int descriptor, OUTPUT_LISTENER* written);
