// How a source image becomes a texture: the properties that ACTION_DDS_N and the channel-packed maps read.
#pragma once

#include "processor/host/rule_schema.hpp"

class TEXTURE_RULE_SCHEMA : public RULE_SCHEMA {
    Q_OBJECT

public:
    TEXTURE_RULE_SCHEMA();
};
