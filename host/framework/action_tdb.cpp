#include "processor/host/action_tdb.hpp"

namespace {

thread_local ACTION_TDB* s_tdb_output = nullptr;

}  // namespace

ACTION_PROGRESS::~ACTION_PROGRESS() = default;

void ACTION_PROGRESS::set_progress(int progress) {
    action_.set_progress_value(progress);
}

void ACTION_PROGRESS::add_progress(int progress) {
    action_.set_progress_value(action_.progress() + progress);
}

bool ACTION_PROGRESS::aborted() {
    return action_.is_aborted();
}

void ACTION_PROGRESS::output(char const* text, OUTPUT_LEVEL) {
    unfinished_ += QString::fromLocal8Bit(text);
}

void ACTION_PROGRESS::output_line(char const* text, OUTPUT_LEVEL) {
    QString const line = unfinished_ + QString::fromLocal8Bit(text);
    unfinished_.clear();
    action_.add_output_line(line);
}

ACTION_TDB::ACTION_TDB(PROCESSOR_INTERFACE& processor)
    : ACTION_INTERFACE(processor),
      ACTION_PROGRESS(static_cast<ACTION_INTERFACE&>(*this)) {
}

ACTION_TDB::ACTION_TDB(ACTION_TDB const& other)
    : ACTION_INTERFACE(other),
      ACTION_PROGRESS(static_cast<ACTION_INTERFACE&>(*this)) {
}

ACTION_TDB::~ACTION_TDB() {
    if (s_tdb_output == this)
        s_tdb_output = nullptr;
}

void ACTION_TDB::reset() {
    ACTION_INTERFACE::reset();
    forget_unfinished_line();
}

void ACTION_TDB::set_up_tdb_output() {
    s_tdb_output = this;
}

PROGRESS_CALLBACK* ACTION_TDB::tdb_output() {
    return s_tdb_output;
}
