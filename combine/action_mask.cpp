#include "combine/action_mask.hpp"

#include "combine/combine_mask_images.hpp"
#include "processor/host/paths.hpp"

#include <QFile>

namespace {

QLatin1String const action_name("Convert mask texture");

}  // namespace

// Of colour masks the third is listed twice and the fourth never, although it is read: deliberate. The host hears of it
// in another way, so that a change of it is not missed.
ACTION_MASK::ACTION_MASK(PHYSICAL_PATH const& stem, bool numbered, PROCESSOR_INTERFACE& processor)
    : STEM_ACTION(stem, processor, action_name,
                  {{mask_suffixes(numbered)[0]},
                   {mask_suffixes(numbered)[1], true},
                   {mask_suffixes(numbered)[2], true},
                   {mask_suffixes(numbered)[numbered ? 3 : 2], true}}),
      numbered_(numbered) {
    set_target_filename(mask_target_name(stem, numbered));
    if (!numbered)
        add_unlisted_source(logical_path_of(mask_suffixes(numbered)[3]));
}

bool ACTION_MASK::make_target(FILE_MAP const&, RULE_CACHE const& rules) {
    QString const stem = PATHS::physical_path(logical_source());
    auto const path = [&](std::size_t position) {
        return PHYSICAL_PATH(stem + mask_suffixes(numbered_)[position]);
    };
    auto image = QFile::exists(path(3)) ? combine_mask_images_4(*this, path(0), path(1), path(2), path(3), true)
                                        : combine_mask_images_3(*this, path(0), path(1), path(2), false, false, false);
    if (!image) {
        add_output_line(QStringLiteral("Failed To Combine Files"));
        return false;
    }
    TEXTURE_RULES record;
    if (!read_rules(rules, record)) {
        add_output_line(QStringLiteral("Failed in gathering the rules"));
        return false;
    }
    compress_to_target(*image, record);
    return true;
}

bool ACTION_MASK::read_rules(RULE_CACHE const& rules, TEXTURE_RULES& record) {
    for (QLatin1String const suffix : mask_suffixes(numbered_)) {
        if (read_texture_rules(*this, rules, logical_path_of(suffix), record))
            return true;
    }
    return false;
}
