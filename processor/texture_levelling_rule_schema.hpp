// How the channel combiner remaps the grey values of a source before it packs them.
#pragma once

#include "processor/host/rule_schema.hpp"

class TEXTURE_LEVELLING_RULE_SCHEMA : public RULE_SCHEMA {
    Q_OBJECT

public:
    TEXTURE_LEVELLING_RULE_SCHEMA();
};
