// The tool-data builder library's texture compressor: TGA files in, one DXT-compressed DDS file with mip levels out. It
// packs single channels of several files into one texture, and chooses between DXT1 and DXT5 where it is let. Problems
// are told in messages (messages.hpp), one line for each, naming the files.
#pragma once

#include "platform/qe/uni_string.hpp"

namespace TOOLDATABUILDER {

/// Channel sources are given in the order of the channels that they become: the red of the first source, the green of
/// the second, the blue of the third, and for alpha the red of the fourth. An optional source that is an empty path or
/// a file that is not there is an absent channel: colour 0, alpha opaque. All others must be readable and of one size.
/// All operations make a full mip chain with a box filter, write the target whole or not at all, and say why when they
/// fail. Nothing is thrown.
class TEXTURE_COMPRESSOR {
public:
    /// Relative paths are meant from `base_folder`; with an empty one, from the working directory of the process.
    explicit TEXTURE_COMPRESSOR(QE::UniString const& base_folder) : base_folder_(base_folder) {}

    /// One TGA, all channels as they are, to "<name>.dds": DXT1 when its alpha is 255 everywhere, unless `forbid_dxt1`,
    /// else DXT5. An empty `target_folder` stands for the source's folder, a null `target_name` (without extension) for
    /// the source's name. Without `mipmaps` the file has one level; with `linear_light` the smaller levels' colours are
    /// averaged as light, not as numbers. Tells whether the file was written: one that is there already is not
    /// replaced, since it may be anybody's.
    bool process_tga(QE::UniString const& target_folder, QE::UniString const* target_name, QE::UniString const& source,
                     bool linear_light, bool mipmaps, bool forbid_dxt1);

    /// To DXT1. The first source is required; with `all_required` all three are.
    void compress_to_dxt1(QE::UniString const& red, QE::UniString const& green, QE::UniString const& blue,
                          QE::UniString const& target, bool all_required);
    /// To DXT1. Any source may be absent, but not all.
    void compress_to_dxt1_optional(QE::UniString const& red, QE::UniString const& green, QE::UniString const& blue,
                                   QE::UniString const& target);
    /// To DXT5. Any source may be absent, but not all.
    void compress_to_dxt5_optional(QE::UniString const& red, QE::UniString const& green, QE::UniString const& blue,
                                   QE::UniString const& alpha, QE::UniString const& target);
    /// To DXT1 when alpha is absent or 255 everywhere, else to DXT5. The first source is required.
    void compress_to_optimal(QE::UniString const& red, QE::UniString const& green, QE::UniString const& blue,
                             QE::UniString const& alpha, QE::UniString const& target);

private:
    QE::UniString base_folder_;
};

}  // namespace TOOLDATABUILDER
