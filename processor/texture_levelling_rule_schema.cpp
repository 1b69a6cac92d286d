#include "processor/texture_levelling_rule_schema.hpp"

TEXTURE_LEVELLING_RULE_SCHEMA::TEXTURE_LEVELLING_RULE_SCHEMA()
    : RULE_SCHEMA(QStringLiteral("TextureLevelling"), QStringLiteral("Levelling data for texture combiner")) {
    add_property(QStringLiteral("InputMin"), QStringLiteral("0-255. -1 means auto levelling. Default: 0"));
    add_property(QStringLiteral("InputMax"), QStringLiteral("0-255. -1 means auto levelling. Default: 255"));
    add_property(QStringLiteral("OutputMin"), QStringLiteral("0-255. Default: 0"));
    add_property(QStringLiteral("OutputMax"), QStringLiteral("0-255. Default: 255"));
}
