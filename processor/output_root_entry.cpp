// The function behind `set_output_root_name`.
#include "processor/host/output_root_entry.hpp"

#include "platform/qe/output_root.hpp"

#include <QtGlobal>

#include <type_traits>

extern "C" Q_DECL_EXPORT void zab_set_output_root(char const* path, int descriptor, OUTPUT_LISTENER* written) {
    QE::set_output_root({path, descriptor, written});
}

static_assert(std::is_same_v<decltype(zab_set_output_root), SET_OUTPUT_ROOT>);
