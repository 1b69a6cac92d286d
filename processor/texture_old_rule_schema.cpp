#include "processor/texture_old_rule_schema.hpp"

TEXTURE_OLD_RULE_SCHEMA::TEXTURE_OLD_RULE_SCHEMA()
    : RULE_SCHEMA(QStringLiteral("TextureOld"), QStringLiteral("Legacy texture processor metadata")) {
    add_property(QStringLiteral("TargetPath"), QStringLiteral("Name of the target folder for converted textures."));
    add_property(QStringLiteral("Format"), QStringLiteral("All common formats: dds, jpg, tga, etc. Default: dds"));
    add_property(QStringLiteral("ForbidDXT1"),
                 QStringLiteral("If 'true' or '1' then dds compression will always choose a full-alpha compression "
                                "(DXT3 or DXT5) Default: <empty> (=DXT1 is allowed)"));
}
