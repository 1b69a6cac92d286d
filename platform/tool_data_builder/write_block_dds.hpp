// From texels to a DDS file of blocks on the disk, for everything in this library that ends in one.
#pragma once

#include "blocks/block_types.hpp"
#include "platform/dds_container/dds_container.hpp"
#include "platform/qe/replace_file.hpp"

#include <filesystem>
#include <span>
#include <string>

namespace TOOLDATABUILDER {

struct BLOCK_DDS_SETTINGS {
    blocks::FORMAT format = blocks::FORMAT::bc1;
    /// Only BC1, BC2 and BC3 have a legacy header that every reader knows.
    dds_container::HEADER_KIND header_kind = dds_container::HEADER_KIND::legacy;
    blocks::ENCODE_OPTIONS options;
    /// How many threads encode. The bytes do not depend on it.
    int threads = 1;
    QE::EARLIER_FILE earlier = QE::EARLIER_FILE::replaced;
};

/// Encodes the levels (the top level first, each half of the one before) and writes the file. It is written beside
/// `target` under another name and takes its place when it is whole. False on failure: `cause` says why, and `target`
/// is as it was. Throws std::bad_alloc.
bool write_block_dds(std::filesystem::path const& target, std::span<blocks::RGBA8_VIEW const> levels,
                     BLOCK_DDS_SETTINGS const& settings, std::string& cause);

}  // namespace TOOLDATABUILDER
