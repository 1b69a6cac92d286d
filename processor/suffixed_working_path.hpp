// Where a variant of a source's target goes: the source's place below the data root, moved below the working data
// root, with a suffix between stem and extension.
#pragma once

#include "processor/host/physical_path.hpp"

#include <QString>

/// "<raw>/a/b.tga", suffix "_ab" → "a/b_ab.tga" below the working data root that targets of this source belong to. The
/// extension is what follows the last dot.
QString suffixed_working_path(PHYSICAL_PATH const& physical, QString const& suffix);
