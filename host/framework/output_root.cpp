#include "host/framework/output_root.hpp"

#include "platform/qe/output_root.hpp"

namespace framework {

void set_output_root(char const* path, int descriptor, OUTPUT_LISTENER* written) {
    QE::set_output_root({path, descriptor, written});
}

}  // namespace framework
