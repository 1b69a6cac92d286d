// The parts of a plan as JSON, for `zab plan --json` and the event stream (docs/command.md, docs/events.md). Files are
// logical paths, which are the same on every machine.
#pragma once

#include "host/tool/planner.hpp"

#include <QJsonArray>

namespace tool {

QJsonArray source_files(PLANNED_ACTION const& planned);
QJsonArray target_files(PLANNED_ACTION const& planned);
/// An array of objects: id, name, sources, targets, depends, state, reason, error.
QJsonArray to_json(PLAN const& plan);

}  // namespace tool
