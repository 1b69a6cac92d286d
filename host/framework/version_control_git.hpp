// Targets kept in a git repository: written ones are staged, removed ones leave the index, reverted ones come back from
// HEAD. Commits stay with people.
#pragma once

#include "host/framework/version_control.hpp"

#include <QMutex>
#include <QStringList>

namespace framework {

class VERSION_CONTROL_GIT : public VERSION_CONTROL {
public:
    explicit VERSION_CONTROL_GIT(PHYSICAL_PATH const& folder) : folder_(folder) {}

    FAILURE prepare_write(PHYSICAL_PATH const&) override { return {}; }
    FAILURE add(PHYSICAL_PATH const& file) override;
    FAILURE remove(PHYSICAL_PATH const& file) override;
    FAILURE revert(PHYSICAL_PATH const& file) override;

private:
    FAILURE git(QStringList const& arguments, PHYSICAL_PATH const& file, char const* what);

    PHYSICAL_PATH folder_;
    /// Git's index has room for one writer.
    QMutex mutex_;
};

}  // namespace framework
