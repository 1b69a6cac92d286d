// What an action's targets held when they took their places, by their writers' word. Whoever looks at a target later
// may see what somebody else has put there since, and must not take it for the action's.
#pragma once

#include "host/tool/file_contents.hpp"

#include <QHash>
#include <QString>

namespace tool {

/// By tidied path. Files that were written in other ways than by `set_output_root`'s are not in it.
using WRITTEN_FILES = QHash<QString, CONTENT_HASH>;

/// Listens while it lives. One at a time in a process.
class WRITTEN_FILES_RECORDER {
public:
    WRITTEN_FILES_RECORDER();
    WRITTEN_FILES_RECORDER(WRITTEN_FILES_RECORDER const&) = delete;
    WRITTEN_FILES_RECORDER& operator=(WRITTEN_FILES_RECORDER const&) = delete;
    ~WRITTEN_FILES_RECORDER();

    WRITTEN_FILES const& files() const { return files_; }

private:
    WRITTEN_FILES files_;
};

/// For those who write: an OUTPUT_LISTENER.
void note_written_file(char const* target, int descriptor);

}  // namespace tool
