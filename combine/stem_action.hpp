// What the actions that make one texture from the files of one stem have in common: the stem is the logical path of
// their sources without the channel suffix ("<raw>/rocks/cliff" of "<raw>/rocks/cliff_gloss.tga"), and whatever makes
// the texture, the target file that stands there afterwards decides between success and failure.
#pragma once

#include "dds/action_line_sink.hpp"
#include "dds/texture_rules.hpp"
#include "platform/qe/image32.hpp"
#include "processor/host/action_convert.hpp"

#include <QLatin1String>

#include <functional>
#include <vector>

class STEM_ACTION : public ACTION_CONVERT, public ACTION_LINE_SINK<STEM_ACTION> {
public:
    using ACTION_LINE_SINK::add_output_line;

    QString get_name(bool detailed) override;
    void get_source_files(QVector<LOGICAL_PATH>& sources, FILE_MAP const& files) override;

protected:
    struct STEM_SOURCE {
        QLatin1String suffix;
        /// Listed among the sources only when the file table holds it.
        bool is_optional = false;
    };

    STEM_ACTION(PHYSICAL_PATH const& stem, PROCESSOR_INTERFACE& processor, QLatin1String name,
                std::vector<STEM_SOURCE> sources);

    /// A run: has the target made and registers it. `make_target` tries to write it and returns false after lines that
    /// say why nothing was tried; true leaves the decision to the target file. It is no virtual operation, since the
    /// table of those ends with the contract's.
    STATUS run_with(std::function<bool()> const& make_target, FILE_MAP const& files);

    LOGICAL_PATH logical_path_of(QLatin1String suffix) const;
    /// The path of the file table's entry for the stem's file of this suffix, with as many characters cut off its end
    /// as the suffix has, whatever they are.
    PHYSICAL_PATH physical_stem(FILE_MAP const& files, QLatin1String suffix) const;
    void create_target_folder() const;

    /// The image, by the road that all textures go, to the target. An earlier target is not removed first: where the
    /// compression fails before it touches the file, that one stays, and the action succeeds with it. What a failed
    /// compression has written is removed.
    void compress_to_target(QE::IMAGE32& image, TEXTURE_RULES const& rules);
    /// The same with the rule "Texture" of the stem's file of this suffix. False when it cannot be read.
    bool compress_to_target(QE::IMAGE32& image, RULE_CACHE const& rules, QLatin1String suffix);

private:
    QLatin1String name_;
    std::vector<STEM_SOURCE> sources_;
};
