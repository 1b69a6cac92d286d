// The processor of actions that are made without one.
#pragma once

#include "processor/host/processor_interface.hpp"

class NO_PROCESSOR : public PROCESSOR_INTERFACE {
public:
    QString get_name() override { return {}; }
    QVector<ACTION_INTERFACE*> create_actions(FILE_MAP const&, RULE_CACHE const&) override { return {}; }
};
