#include "host/framework/version_control.hpp"

#include "host/framework/version_control_git.hpp"
#include "host/framework/version_control_perforce.hpp"

namespace framework {

namespace {

class VERSION_CONTROL_NONE : public VERSION_CONTROL {
public:
    FAILURE prepare_write(PHYSICAL_PATH const&) override { return {}; }
    FAILURE add(PHYSICAL_PATH const&) override { return {}; }
    FAILURE remove(PHYSICAL_PATH const&) override { return {}; }
    FAILURE revert(PHYSICAL_PATH const&) override { return {}; }
};

VERSION_CONTROL* s_current = nullptr;

}  // namespace

VERSION_CONTROL::~VERSION_CONTROL() = default;

std::unique_ptr<VERSION_CONTROL> VERSION_CONTROL::make(QString const& kind, PHYSICAL_PATH const& folder) {
    if (kind == QLatin1String("none"))
        return std::make_unique<VERSION_CONTROL_NONE>();
    if (kind == QLatin1String("git"))
        return std::make_unique<VERSION_CONTROL_GIT>(folder);
    if (kind == QLatin1String("perforce"))
        return std::make_unique<VERSION_CONTROL_PERFORCE>(folder);
    return nullptr;
}

VERSION_CONTROL& VERSION_CONTROL::current() {
    static VERSION_CONTROL_NONE none;
    return s_current != nullptr ? *s_current : none;
}

void VERSION_CONTROL::set_current(VERSION_CONTROL* version_control) {
    s_current = version_control;
}

}  // namespace framework
