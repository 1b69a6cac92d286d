#include "host/tool/written_files.hpp"

#include <QDir>
#include <QFile>

namespace tool {

namespace {

WRITTEN_FILES* listening = nullptr;

}  // namespace

WRITTEN_FILES_RECORDER::WRITTEN_FILES_RECORDER() {
    listening = &files_;
}

WRITTEN_FILES_RECORDER::~WRITTEN_FILES_RECORDER() {
    listening = nullptr;
}

void note_written_file(char const* target, int descriptor) {
    if (!listening)
        return;
    QString const path = QDir::cleanPath(QFile::decodeName(target));
    if (std::optional<CONTENT_HASH> const hash = hash_of_open_file(descriptor))
        listening->insert(path, *hash);
    else
        listening->remove(path);
}

}  // namespace tool
