// The pages of atlases, which no plan lists: how many there will be is known when they have been packed. What announces
// "<base>.tai" makes "<base>0.dds", "<base>1.dds" and so on, by way of Targa files of the same names, and removes those
// of before. So whatever else has such a name is looked for before anything runs, and afterwards that no page is
// missing.
#pragma once

#include "host/tool/build_state.hpp"
#include "host/tool/target_guard.hpp"

namespace tool {

struct SHARED_PAGE {
    QString file;
    /// Places in the plan: an atlas, and whoever may write the same file.
    std::size_t atlas;
    std::size_t other;
};

/// The first file of each pair of actions that may both come to write it, one of them as the page of an atlas.
/// `producers` says which action announces the file at a place.
std::vector<SHARED_PAGE> shared_pages(std::vector<PLANNED_ACTION> const& actions,
                                      QHash<QString, std::size_t> const& producers, TARGET_GUARD& guard,
                                      RULE_CACHE const& rules);

/// Takes files that no build has made, and that only have the name of a page, out of the action's targets. Not empty
/// when there is such a file: why the atlas must not run, which would remove the file or write over it.
QString take_out_foreign_pages(PLANNED_ACTION& planned, BUILD_STATE& state, RULE_CACHE const& rules);

/// A page that the action's index names and that is not there; empty when there is none.
QString missing_page(PLANNED_ACTION const& planned);

}  // namespace tool
