// The names of mask files: up to four greyscale masks of one stem, numbered ("cliff_mask1.tga"), or colour masks
// ("cliff_colormask.tga").
#pragma once

#include "processor/host/physical_path.hpp"

#include <QLatin1String>
#include <QString>

#include <array>

/// Of numbered masks or of colour masks, in the order of the channels that the files become: red, green, blue, alpha.
std::array<QLatin1String, 4> const& mask_suffixes(bool numbered);

/// The target's file name. A stem that ends in ']' loses its last four characters: "cliff[ab]" makes "cliff_mask.dds".
QString mask_target_name(PHYSICAL_PATH const& stem, bool numbered);
