// Which atlas a source image goes into.
#pragma once

#include "processor/host/rule_schema.hpp"

class ATLAS_RULE_SCHEMA : public RULE_SCHEMA {
    Q_OBJECT

public:
    ATLAS_RULE_SCHEMA();
};
