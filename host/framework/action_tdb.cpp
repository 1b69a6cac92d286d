#include "processor/host/action_tdb.hpp"

namespace {

thread_local ACTION_TDB* s_tdb_output = nullptr;

}  // namespace

ACTION_TDB::ACTION_TDB(PROCESSOR_INTERFACE& processor) : ACTION_INTERFACE(processor) {
}

ACTION_TDB::ACTION_TDB(ACTION_TDB const& other) : ACTION_INTERFACE(other), PROGRESS_CALLBACK() {
}

ACTION_TDB::~ACTION_TDB() {
    if (s_tdb_output == this)
        s_tdb_output = nullptr;
}

void ACTION_TDB::reset() {
    ACTION_INTERFACE::reset();
    unfinished_.clear();
}

void ACTION_TDB::set_progress(int progress) {
    set_progress_value(progress);
}

void ACTION_TDB::add_progress(int progress) {
    set_progress_value(this->progress() + progress);
}

bool ACTION_TDB::aborted() {
    return is_aborted();
}

void ACTION_TDB::output(char const* text, OUTPUT_LEVEL) {
    unfinished_ += QString::fromLocal8Bit(text);
}

void ACTION_TDB::output_line(char const* text, OUTPUT_LEVEL) {
    QString const line = unfinished_ + QString::fromLocal8Bit(text);
    unfinished_.clear();
    add_output_line(line);
}

void ACTION_TDB::set_up_tdb_output() {
    s_tdb_output = this;
}

PROGRESS_CALLBACK* ACTION_TDB::tdb_output() {
    return s_tdb_output;
}
