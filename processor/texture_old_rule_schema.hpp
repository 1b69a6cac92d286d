// How the legacy conversions treat a source image.
#pragma once

#include "processor/host/rule_schema.hpp"

class TEXTURE_OLD_RULE_SCHEMA : public RULE_SCHEMA {
    Q_OBJECT

public:
    TEXTURE_OLD_RULE_SCHEMA();
};
