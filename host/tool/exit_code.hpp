// What the command's exit status says; scripts and build farms tell these cases apart, so the numbers never change.
#pragma once

namespace tool {

enum class EXIT_CODE {
    success = 0,
    /// An action failed, or a picture that was asked for cannot be had.
    failed = 1,
    /// Wrong use, or a project or rule file that is wrong or cannot be read.
    wrong_use = 2,
    /// The surroundings fail: the plug-in does not load, the disk is full.
    environment = 3,
    /// A mistake in this program.
    internal = 4,
    interrupted = 130,
};

}  // namespace tool
