// The file of one asset-graph fragment (".agf"): XML that names the fragments that a build step made and what they
// need.
#pragma once

#include "processor/host/action_interface.hpp"
#include "processor/host/asset_graph.hpp"

namespace framework {

/// Writes the file that the builder's id names, whole or not at all, unless it is there as it has to be. False with a
/// line that names the file otherwise. Paths in it are logical ones, so that the same project gives the same file on
/// every machine.
ZAB_SHARED_API bool save_asset_fragment_file(QTSHARED::ASSET_FRAGMENT_BUILDER const& builder, QString& error);

/// Writes the files of the fragments that `action` added to the graph without saving them, and registers them as its
/// own. False with a line otherwise.
ZAB_SHARED_API bool save_added_fragments(QTSHARED::ASSET_GRAPH& graph, ACTION_INTERFACE& action, FILE_MAP const& files,
                                         QString& error);

}  // namespace framework
