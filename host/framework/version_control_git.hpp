// Targets kept in a git repository: written ones are staged, removed ones leave the index, reverted ones come back from
// HEAD. Commits stay with people.
#pragma once

#include "host/framework/version_control.hpp"

#include <QMutex>
#include <QStringList>

#include <cstdio>
#include <memory>

namespace framework {

class VERSION_CONTROL_GIT : public VERSION_CONTROL {
public:
    /// Processes that are forked later share the object's lock, so that their git commands come one after another too.
    explicit VERSION_CONTROL_GIT(PHYSICAL_PATH const& folder);

    FAILURE prepare_write(PHYSICAL_PATH const&) override { return {}; }
    FAILURE add(PHYSICAL_PATH const& file) override;
    FAILURE remove(PHYSICAL_PATH const& file) override;
    FAILURE revert(PHYSICAL_PATH const& file) override;

private:
    FAILURE git(QStringList const& arguments, PHYSICAL_PATH const& file, char const* what);

    struct CLOSE_FILE {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    PHYSICAL_PATH folder_;
    // Git's index has room for one writer: one thread of one process.
    QMutex mutex_;
    /// Without a name. A record lock on it belongs to a process, ends with it, and is not inherited.
    std::unique_ptr<std::FILE, CLOSE_FILE> lock_file_;
};

}  // namespace framework
