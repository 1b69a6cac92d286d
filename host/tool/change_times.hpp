// Whether a file system keeps the time of a file's last change, which nobody can set back. Where it does not (exFAT,
// FAT, some disks in a network), that time is the one of modification, which every program can set: a file of the same
// size with the same times may then hold something else, and only its contents tell.
#pragma once

#include <QString>

#include <sys/types.h>

namespace tool {

/// Tries it in this folder, and knows from then on of its whole device. Leaves nothing behind.
void learn_change_times(QString const& folder);

/// Whether the device keeps them: tried, or by the kind of the file system that `path` lies on.
bool keeps_change_times(dev_t device, char const* path);

}  // namespace tool
