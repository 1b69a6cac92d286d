// zab clean: removes what a build makes: the targets of the current plan, and the build state. With --stale it removes
// what earlier builds made and no action makes any more, and nothing else.
#include "host/tool/atlas_pages.hpp"
#include "host/tool/open_plan.hpp"
#include "host/tool/plugin_call.hpp"
#include "host/tool/project_lock.hpp"
#include "host/tool/target_guard.hpp"
#include "processor/host/paths.hpp"

#include <CLI/CLI.hpp>

#include <QDir>
#include <QFileInfo>
#include <QSet>

namespace tool {

namespace {

class COMMAND_CLEAN : public COMMAND {
public:
    char const* name() const override { return "clean"; }
    char const* summary() const override { return "Remove the targets of the current plan, and the build state"; }

    void declare(CLI::App& app) override {
        app.add_flag("--stale", stale_, "Remove only the files of earlier builds that no action makes any more");
        app.add_flag("-n,--dry-run", dry_run_, "Say what would be removed, and remove nothing");
    }

    EXIT_CODE run(CONTEXT& context) override {
        if (EXIT_CODE const code = stale_ ? clean_stale(context) : clean_all(context); code != EXIT_CODE::success)
            return code;
        if (context.console.verbosity() != VERBOSITY::quiet)
            context.console.message(dry_run_ ? QStringLiteral("%1 would be removed").arg(removed_)
                                             : QStringLiteral("%1 removed").arg(removed_));
        return all_removed_ ? EXIT_CODE::success : EXIT_CODE::environment;
    }

private:
    // Where there is no state, no build runs.
    EXIT_CODE lock_project(CONTEXT& context, BUILD_SESSION& session, PROJECT_LOCK& lock) const {
        if (EXIT_CODE const code = session.open_project(); code != EXIT_CODE::success)
            return code;
        if (dry_run_ || !QFileInfo::exists(session.project().state_folder))
            return EXIT_CODE::success;
        return open_exclusively(context, session, true, lock);
    }

    EXIT_CODE clean_stale(CONTEXT& context) {
        PROJECT_LOCK lock;
        OPENED_PLAN opened(context);
        if (EXIT_CODE const code = lock_project(context, opened.session, lock); code != EXIT_CODE::success)
            return code;
        if (EXIT_CODE const code = open_plan(context, opened, {}, false); code != EXIT_CODE::success)
            return code;
        TARGET_GUARD guard(opened.session.project().working);
        for (BUILD_STATE::STALE_TARGET const& stale : opened.state->stale_targets()) {
            PHYSICAL_PATH const path = PATHS::physical_path(stale.path);
            if (guard.refusal(path).isEmpty() || is_array_fragment(stale.path))
                remove_file(context.console, opened.session.project().working, path);
        }
        if (!dry_run_)
            opened.state->finish();
        return opened.state->is_sound() ? EXIT_CODE::success : EXIT_CODE::environment;
    }

    EXIT_CODE clean_all(CONTEXT& context) {
        PROJECT_LOCK lock;
        BUILD_SESSION session(context);
        if (EXIT_CODE const code = lock_project(context, session, lock); code != EXIT_CODE::success)
            return code;
        if (EXIT_CODE const code = session.open(); code != EXIT_CODE::success)
            return code;
        // Removing needs no order, and what two actions claim is a target all the same.
        PLAN plan;
        EXIT_CODE const code = call_plugin(session.plugin_file(), context.console, [&] {
            plan = make_plan(session);
            return EXIT_CODE::success;
        });
        if (code != EXIT_CODE::success)
            return code;
        BUILD_STATE state(session, context.console);
        state.open(plan);
        for (PLANNED_ACTION& planned : plan.actions)
            static_cast<void>(take_out_foreign_pages(planned, state, session.rules()));
        TARGET_GUARD guard(session.project().working);
        for (PLANNED_ACTION const& planned : plan.actions)
            for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
                if (planned.state == PLANNED_ACTION::STATE::run && !is_older_file(target) &&
                    (guard.refusal(target.physical_path).isEmpty() || is_fragment_beside_source(planned, target)))
                    remove_file(context.console, session.project().working, target.physical_path);
        // What is known of them goes with the state, so this is the last chance for all the others.
        for (LOGICAL_PATH const& path : state.known_targets())
            if (guard.refusal(PATHS::physical_path(path)).isEmpty() || is_array_fragment(path))
                remove_file(context.console, session.project().working, PATHS::physical_path(path));
        remove_state(context.console, session.project().state_folder);
        return EXIT_CODE::success;
    }

    // The only files of the raw folder that a build makes. Those of arrays that are gone have no action to tell of
    // them; the state knows them.
    static bool is_array_fragment(LOGICAL_PATH const& path) {
        return path.text().startsWith(QLatin1String("<raw>/")) &&
               path.text().endsWith(QLatin1String(".texture_array.agf"));
    }

    void remove_file(CONSOLE& console, QString const& working, QString const& path) {
        QFileInfo const info(path);
        if ((!info.isFile() && !info.isSymLink()) || listed_.contains(path))
            return;
        // A dry run leaves what the plan and the state both know.
        listed_.insert(path);
        if (!note(console, path, dry_run_ || QFile::remove(path)) || dry_run_)
            return;
        // Folders that have become empty go with it; rmdir refuses the others.
        QDir folder = QFileInfo(path).dir();
        while (folder.path().startsWith(working + u'/') && QDir().rmdir(folder.path()))
            folder = QFileInfo(folder.path()).dir();
    }

    void remove_state(CONSOLE& console, QString const& path) {
        if (QFileInfo(path).isDir())
            note(console, path, dry_run_ || QDir(path).removeRecursively());
    }

    bool note(CONSOLE& console, QString const& path, bool removed) {
        if (removed) {
            ++removed_;
            if (dry_run_ || console.verbosity() == VERBOSITY::verbose)
                console.result(CONSOLE::shown(path));
        } else {
            all_removed_ = false;
            console.error(QStringLiteral("%1 cannot be removed").arg(CONSOLE::shown(path)));
        }
        return removed;
    }

    bool stale_ = false;
    bool dry_run_ = false;
    bool all_removed_ = true;
    int removed_ = 0;
    QSet<QString> listed_;
};

}  // namespace

std::unique_ptr<COMMAND> make_command_clean() {
    return std::make_unique<COMMAND_CLEAN>();
}

}  // namespace tool
