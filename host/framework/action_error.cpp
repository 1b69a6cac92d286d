#include "processor/host/action_error.hpp"

ACTION_ERROR::ACTION_ERROR(QString const& name, QString const& error, PROCESSOR_INTERFACE& processor)
    : ACTION_INTERFACE(processor),
      name_(name) {
    set_error(error);
}

ACTION_ERROR::~ACTION_ERROR() = default;

void ACTION_ERROR::add_source_file(LOGICAL_PATH const& source) {
    sources_.append(source);
}

QString ACTION_ERROR::get_name(bool) {
    return name_;
}

void ACTION_ERROR::get_affected_files(QVector<LOGICAL_PATH>& sources, QVector<TARGET_FILE>&, QDateTime&,
                                      FILE_MAP const&, RULE_CACHE const&) {
    sources += sources_;
}

ACTION_INTERFACE::STATUS ACTION_ERROR::run(FILE_MAP const&, RULE_CACHE const&) {
    add_output_line(error());
    return STATUS_FAILED;
}
