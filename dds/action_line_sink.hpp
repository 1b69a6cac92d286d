// An action as the sink of the lines of those who work for it. The operation is overridden here, in a class between
// OUTPUT_LINE_SINK and the action: overridden in the action itself it would take a slot of its first virtual table in
// some ABIs, behind those of the conversion.
#pragma once

#include "dds/output_line_sink.hpp"
#include "processor/host/action_interface.hpp"

/// Base of ACTION, which says `using ACTION_LINE_SINK::add_output_line;`, so that the name means one operation.
template <typename ACTION>
class ACTION_LINE_SINK : public OUTPUT_LINE_SINK {
public:
    void add_output_line(QString line) override {
        ACTION_INTERFACE& action = static_cast<ACTION&>(*this);
        (action.*ACCESS::add_line)(line);
    }

protected:
    ~ACTION_LINE_SINK() = default;

private:
    /// Never made. What derives from an action may name its protected operations.
    class ACCESS : public ACTION_INTERFACE {
    public:
        static constexpr auto add_line = &ACCESS::add_output_line;
    };
};
