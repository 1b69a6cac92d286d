#include "host/tool/working_root.hpp"

#include "host/framework/output_root.hpp"
#include "host/tool/written_files.hpp"
#include "platform/qe/output_root.hpp"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <unistd.h>

namespace tool {

WORKING_ROOT::~WORKING_ROOT() {
    if (descriptor_ < 0)
        return;
    hand_out("", nullptr);
    close(descriptor_);
}

void WORKING_ROOT::open(BUILD_SESSION const& session) {
    QString const& working = session.project().working;
    QDir().mkpath(working);
    QByteArray const path = QFile::encodeName(working);
    descriptor_ = ::open(path.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (descriptor_ < 0)
        return;
    plugins_own_ = session.plugin().set_output_root();
    hand_out(path.constData(), &note_written_file);
}

void WORKING_ROOT::hand_out(char const* path, OUTPUT_LISTENER* written) const {
    // Each library has its own copy of what writes.
    QE::set_output_root({path, descriptor_, written});
    framework::set_output_root(path, descriptor_, written);
    if (plugins_own_)
        plugins_own_(path, descriptor_, written);
}

}  // namespace tool
