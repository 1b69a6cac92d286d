// The switch is a function of the TIFF library, which comes along with FreeImage and is no dependency of this project:
// it is looked up by name in what is loaded, so that neither its header nor its version has to be known.
#include "platform/image_loader/quiet_tiff.hpp"

#if __has_include(<dlfcn.h>)
#include <dlfcn.h>
#endif

namespace IMAGE_LOADER {

namespace {

[[maybe_unused]] bool set_no_handler([[maybe_unused]] char const* switch_name) {
#if __has_include(<dlfcn.h>)
    // Takes and returns pointers to functions; null stands for no output.
    using SET_HANDLER = void (*(*)(void (*)()))();
    if (void* const symbol = dlsym(RTLD_DEFAULT, switch_name)) {
        reinterpret_cast<SET_HANDLER>(symbol)(nullptr);
        return true;
    }
#endif
    return false;
}

}  // namespace

void keep_tiff_quiet() {
    [[maybe_unused]] static bool const is_quiet =
        set_no_handler("TIFFSetErrorHandler") && set_no_handler("TIFFSetWarningHandler");
}

}  // namespace IMAGE_LOADER
