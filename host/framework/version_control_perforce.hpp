// Targets kept in a Perforce depot, through the `p4` command and whatever client its environment names. Files of a
// client are read-only until they are opened, so writing is announced before it happens.
#pragma once

#include "host/framework/version_control.hpp"

#include <QStringList>

namespace framework {

class VERSION_CONTROL_PERFORCE : public VERSION_CONTROL {
public:
    explicit VERSION_CONTROL_PERFORCE(PHYSICAL_PATH const& folder) : folder_(folder) {}

    FAILURE prepare_write(PHYSICAL_PATH const& file) override;
    FAILURE add(PHYSICAL_PATH const& file) override;
    FAILURE remove(PHYSICAL_PATH const& file) override;
    FAILURE revert(PHYSICAL_PATH const& file) override;

private:
    /// Whether the depot holds the file, and not only as a deleted one.
    bool is_in_depot(PHYSICAL_PATH const& file);
    FAILURE p4(QStringList const& command, PHYSICAL_PATH const& file, char const* what);

    PHYSICAL_PATH folder_;
};

}  // namespace framework
