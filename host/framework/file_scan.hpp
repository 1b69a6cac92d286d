// The walk over the two data roots that a build begins with: every file that processors may see, and every rule file.
#pragma once

#include "host/framework/project.hpp"
#include "processor/host/file_map.hpp"

#include <deque>

namespace framework {

struct FOUND_RULE_FILE {
    /// Absolute.
    QString path;
    /// Its folder, relative to the raw data root; empty for the root itself.
    QString folder;
};

struct SCANNED_FILES {
    /// "<raw>/..." and then "<working>/...", each sorted by its text.
    FILE_MAP map;
    /// The entries that `map` points to.
    std::deque<FILE_ENTRY> entries;
    /// Of the raw root, sorted by folder.
    std::vector<FOUND_RULE_FILE> rule_files;
};

/// Walks both roots into `files`, which is empty before. Names that begin with a dot are left out. Folders that are
/// linked to are walked, each real folder through one link at most, and never from inside itself. What cannot be read
/// or named becomes a diagnostic, and the walk goes on; a raw root that is not there is an error, a working root that
/// is not there is empty.
ZAB_SHARED_API void scan_files(PROJECT const& project, SCANNED_FILES& files, DIAGNOSTICS& diagnostics);

/// Walks the working root once more, after actions have run, and adds what `files` does not know yet; the map is in its
/// order again afterwards. What cannot be read is left out without a word: the first walk has told of it.
ZAB_SHARED_API void scan_made_files(PROJECT const& project, SCANNED_FILES& files);

}  // namespace framework
