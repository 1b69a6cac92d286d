#include "platform/qe/fp_state.hpp"

#include <cfenv>

namespace QE {

namespace {

struct KEPT_STATE {
    std::fenv_t callers = {};
    bool callers_in_force = true;
};

thread_local KEPT_STATE kept;

}  // namespace

void set_fp_state(bool callers) {
    if (callers == kept.callers_in_force) {
        return;
    }
    if (callers) {
        std::fesetenv(&kept.callers);
    } else {
        std::fegetenv(&kept.callers);
        std::fesetenv(FE_DFL_ENV);
    }
    kept.callers_in_force = callers;
}

}  // namespace QE
