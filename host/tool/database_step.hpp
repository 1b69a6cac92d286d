// The step that ends a build where the project asks for it: the image-information database. It reads whatever the other
// actions have made, also files that nobody could announce before they ran, so it is planned with the others and run
// apart: after them, when the file map has been brought up to date. A first build so sees the same files as a second
// one.
#pragma once

#include "host/tool/runner.hpp"

#include <functional>

namespace tool {

/// Makes the actions, the core data's first. Without the global rule "Retail" there is no other. For retail there is
/// one for each expansion that an "Expansion" rule names, and for those of the table texc_expansions that no rule names
/// any more but whose database, or its fragment, is still there, and no other action's: it has to go.
std::vector<std::unique_ptr<ACTION_INTERFACE>>
make_database_actions(BUILD_SESSION& session, CREATE_IMAGE_DATABASE_ACTION& create, PROCESSOR_INTERFACE& processor);

/// The file beside a retail database that declares it in the asset graph.
QString database_fragment(QString const& database);

/// Adds the textures that the database reads without naming them as its sources: those that end in ".DDS".
void add_unlisted_sources(PLANNED_ACTION& planned, BUILD_SESSION& session);

struct STEPPED_RUN {
    bool fail_fast = false;
    std::vector<RUN_OBSERVER*> const& observers;
    /// Runs some of the plan's actions.
    std::function<RUN_COUNTS(PLAN&, std::vector<RUN_OBSERVER*> const&)> run_part;
};

/// Runs a plan, its last step apart; to the observers it is one run. An action of the last step fails when one that it
/// needs did, and none runs after an interruption or, with `fail_fast`, after a failure.
RUN_COUNTS run_with_last_step(PLAN plan, BUILD_SESSION& session, STEPPED_RUN const& stepped);

}  // namespace tool
