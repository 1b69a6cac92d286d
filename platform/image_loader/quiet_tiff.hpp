// The TIFF library prints to standard error by itself, some sixty lines for every sound file when an image library
// above it looks for camera data. Standard error belongs to the host.
#pragma once

namespace IMAGE_LOADER {

/// From the first call on, the TIFF library that is loaded in this process prints nothing; whether a file could be
/// decoded is still told. Where its switch cannot be found, nothing happens.
void keep_tiff_quiet();

}  // namespace IMAGE_LOADER
