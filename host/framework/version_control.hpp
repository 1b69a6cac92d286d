// What the build asks of a version control system: that a target may be written, and that it is known, removed or put
// back afterwards. Actions reach the current one through ACTION_INTERFACE; the host chooses it once, before actions
// run.
#pragma once

#include "processor/host/export.hpp"
#include "processor/host/physical_path.hpp"

#include <QString>

#include <memory>
#include <optional>

namespace framework {

class ZAB_SHARED_API VERSION_CONTROL {
public:
    /// All operations return nothing when they succeeded, else one line that names the file and the cause. They may be
    /// called from several threads.
    using FAILURE = std::optional<QString>;

    virtual ~VERSION_CONTROL();

    /// Makes an existing file writable; a file that is not there, or not known, is left alone.
    virtual FAILURE prepare_write(PHYSICAL_PATH const& file) = 0;
    /// The file was written: it, or its change, belongs to the next submission.
    virtual FAILURE add(PHYSICAL_PATH const& file) = 0;
    /// The file goes with the next submission; whether it stays on disk is the caller's business.
    virtual FAILURE remove(PHYSICAL_PATH const& file) = 0;
    /// The file becomes again what was submitted last.
    virtual FAILURE revert(PHYSICAL_PATH const& file) = 0;

    /// "none", "git" or "perforce"; null for any other kind. `folder` is the project's.
    static std::unique_ptr<VERSION_CONTROL> make(QString const& kind, PHYSICAL_PATH const& folder);

    /// The one that actions use. Never null: without a choice it is the one that does nothing.
    static VERSION_CONTROL& current();
    /// Borrowed; null takes the choice back.
    static void set_current(VERSION_CONTROL* version_control);
};

}  // namespace framework
