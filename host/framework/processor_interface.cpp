#include "processor/host/processor_interface.hpp"

PROCESSOR_INTERFACE::PROCESSOR_INTERFACE() = default;
PROCESSOR_INTERFACE::~PROCESSOR_INTERFACE() = default;

int PROCESSOR_INTERFACE::priority() const {
    return 0;
}

QVector<QString> PROCESSOR_INTERFACE::get_affected_directories() {
    return {};
}

QVector<QPair<PHYSICAL_PATH, QDateTime>> PROCESSOR_INTERFACE::get_virtual_files(FILE_MAP const&, RULE_CACHE const&) {
    return {};
}

void PROCESSOR_INTERFACE::setup_dc(char const* name, int length) {
    dc_name_ = QString::fromUtf8(name, length);
}
