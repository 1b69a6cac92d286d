// The processor that decides which build actions the source images of a game need.
#pragma once

#include "processor/host/processor_interface.hpp"

class TEXTURE_PROCESSOR : public PROCESSOR_INTERFACE {
public:
    TEXTURE_PROCESSOR();

    QString get_name() override;
    /// See ACTION_DISPATCH. Nothing is kept between calls.
    QVector<ACTION_INTERFACE*> create_actions(FILE_MAP const& files, RULE_CACHE const& rules) override;
};
