// The index of an atlas (.tai): text that tells, for every source, which page holds it and where, in texture
// coordinates. Games read it, so every byte of it is fixed.
#pragma once

#include "atlas/atlas_builder.hpp"
#include "dds/output_line_sink.hpp"

#include <QString>

#include <string>

/// The whole file: the header, which speaks of `base_name` (Latin-1), an empty line, and a line for every source, group
/// by group, in the order of packing. Pages are finalized. Line ends are those of the platform's text files.
std::string atlas_index_text(std::map<D3D_FORMAT, ATLAS_GROUP> const& groups, std::string const& base_name,
                             bool has_half_texel);

/// Writes the text under the path. A line to the sink says that the file is being saved, once it can be opened; with
/// false another one says that it cannot be written, and what was there before is as it was.
bool write_atlas_index(OUTPUT_LINE_SINK& sink, QString const& path, std::string const& text);
