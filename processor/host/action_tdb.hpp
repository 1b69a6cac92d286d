// An action that reports progress, and that can take the messages of the tool-data builder library as its own.
#pragma once

#include "processor/host/action_interface.hpp"
#include "processor/host/progress_callback.hpp"

class ZAB_SHARED_API ACTION_TDB : public ACTION_INTERFACE, public PROGRESS_CALLBACK {
public:
    explicit ACTION_TDB(PROCESSOR_INTERFACE& processor);
    ACTION_TDB(ACTION_TDB const& other);
    ~ACTION_TDB() override;

    void reset() override;

    void set_progress(int progress) override;
    void add_progress(int progress) override;
    bool aborted() override;
    void output(char const* text, OUTPUT_LEVEL level) override;
    void output_line(char const* text, OUTPUT_LEVEL level) override;

    /// From here on, what the tool-data builder library says on this thread becomes lines of this action, until another
    /// action takes its place or this one is destroyed.
    void set_up_tdb_output();

    /// The action that receives the library's messages on this thread; null when none does. Borrowed.
    static PROGRESS_CALLBACK* tdb_output();

private:
    /// Text given to output() whose line has not ended yet.
    QString unfinished_;
};
