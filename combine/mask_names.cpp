#include "combine/mask_names.hpp"

namespace {

// The first colour mask has no number.
std::array<QLatin1String, 4> const colour_suffixes = {QLatin1String("_colormask.tga"), QLatin1String("_colormask2.tga"),
                                                      QLatin1String("_colormask3.tga"),
                                                      QLatin1String("_colormask4.tga")};
std::array<QLatin1String, 4> const numbered_suffixes = {QLatin1String("_mask1.tga"), QLatin1String("_mask2.tga"),
                                                        QLatin1String("_mask3.tga"), QLatin1String("_mask4.tga")};

}  // namespace

std::array<QLatin1String, 4> const& mask_suffixes(bool numbered) {
    return numbered ? numbered_suffixes : colour_suffixes;
}

QString mask_target_name(PHYSICAL_PATH const& stem, bool numbered) {
    QString name = stem.section(QLatin1Char('/'), -1);
    if (name.endsWith(QLatin1Char(']')))
        name.chop(4);
    return name + (numbered ? QLatin1String("_mask.dds") : QLatin1String("_colour_mask.dds"));
}
