// An action that reports progress, and that can take the messages of the tool-data builder library as its own.
//
// The progress operations are overridden in a class between PROGRESS_CALLBACK and the action. Overridden in the action
// itself they would take slots of its first virtual table in some ABIs, in front of those of the conversion.
#pragma once

#include "processor/host/action_interface.hpp"
#include "processor/host/progress_callback.hpp"

/// Progress and text of library code, passed on to an action.
class ZAB_SHARED_API ACTION_PROGRESS : public PROGRESS_CALLBACK {
public:
    /// `action` outlives this object: it is its derived part.
    explicit ACTION_PROGRESS(ACTION_INTERFACE& action) : action_(action) {}
    ACTION_PROGRESS(ACTION_PROGRESS const&) = delete;
    ACTION_PROGRESS& operator=(ACTION_PROGRESS const&) = delete;
    ~ACTION_PROGRESS() override;

    void set_progress(int progress) override;
    void add_progress(int progress) override;
    bool aborted() override;
    void output(char const* text, OUTPUT_LEVEL level) override;
    void output_line(char const* text, OUTPUT_LEVEL level) override;

protected:
    void forget_unfinished_line() { unfinished_.clear(); }

private:
    ACTION_INTERFACE& action_;
    /// Text given to output() whose line has not ended yet.
    QString unfinished_;
};

class ZAB_SHARED_API ACTION_TDB : public ACTION_INTERFACE, public ACTION_PROGRESS {
public:
    explicit ACTION_TDB(PROCESSOR_INTERFACE& processor);
    ACTION_TDB(ACTION_TDB const& other);
    ~ACTION_TDB() override;

    void reset() override;

    /// From here on, what the tool-data builder library says on this thread becomes lines of this action, until another
    /// action takes its place or this one is destroyed.
    void set_up_tdb_output();

    /// The action that receives the library's messages on this thread; null when none does. Borrowed.
    static PROGRESS_CALLBACK* tdb_output();
};
