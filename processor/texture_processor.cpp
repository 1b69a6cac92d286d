#include "processor/texture_processor.hpp"

#include "processor/action_dispatch.hpp"

TEXTURE_PROCESSOR::TEXTURE_PROCESSOR() {
    setup_dc("ZAB_Texture", 11);
}

QString TEXTURE_PROCESSOR::get_name() {
    return QStringLiteral("Texture");
}

QVector<ACTION_INTERFACE*> TEXTURE_PROCESSOR::create_actions(FILE_MAP const& files, RULE_CACHE const& rules) {
    return ACTION_DISPATCH(*this, files, rules).create_actions();
}
