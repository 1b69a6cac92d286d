#include "processor/atlas_rule_schema.hpp"

ATLAS_RULE_SCHEMA::ATLAS_RULE_SCHEMA()
    : RULE_SCHEMA(QStringLiteral("Atlas"), QStringLiteral("Add texture to an atlas")) {
    add_property(QStringLiteral("TargetBaseName"),
                 QStringLiteral("Target filename without an extension. .dds and .tai will be saved."));
    add_property(QStringLiteral("Width"), QStringLiteral("Width of atlas pages."));
    add_property(QStringLiteral("Height"), QStringLiteral("Height of atlas pages."));
}
