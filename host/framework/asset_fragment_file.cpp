#include "host/framework/asset_fragment_file.hpp"

#include "host/framework/version_control.hpp"
#include "processor/host/paths.hpp"

#include <QSaveFile>
#include <QXmlStreamWriter>

namespace framework {

bool save_asset_fragment_file(QTSHARED::ASSET_FRAGMENT_BUILDER const& builder, QString& error) {
    QSaveFile file(builder.id());
    if (!file.open(QIODevice::WriteOnly)) {
        error = QStringLiteral("Failed to write '%1': %2").arg(builder.id(), file.errorString());
        return false;
    }
    QXmlStreamWriter xml(&file);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("asset_fragments"));
    for (auto const& fragment : builder.fragments()) {
        xml.writeStartElement(QStringLiteral("fragment"));
        xml.writeAttribute(QStringLiteral("name"), fragment.name);
        xml.writeAttribute(QStringLiteral("file"), PATHS::logical_path(PHYSICAL_PATH(fragment.file)));
        if (!fragment.package.isEmpty())
            xml.writeAttribute(QStringLiteral("package"), fragment.package);
        for (auto const& dependency : builder.dependencies()) {
            if (dependency.fragment != fragment.name)
                continue;
            xml.writeEmptyElement(QStringLiteral("dependency"));
            xml.writeAttribute(QStringLiteral("fragment"), dependency.needs);
            xml.writeAttribute(QStringLiteral("kind"), dependency.kind);
            if (!dependency.condition.isEmpty())
                xml.writeAttribute(QStringLiteral("condition"), dependency.condition);
        }
        xml.writeEndElement();
    }
    xml.writeEndElement();
    xml.writeEndDocument();
    if (!file.commit()) {
        error = QStringLiteral("Failed to write '%1': %2").arg(builder.id(), file.errorString());
        return false;
    }
    return true;
}

bool save_added_fragments(QTSHARED::ASSET_GRAPH& graph, ACTION_INTERFACE& action, FILE_MAP const& files,
                          QString& error) {
    for (QTSHARED::ASSET_FRAGMENT_BUILDER const& builder : graph.take_unwritten()) {
        PHYSICAL_PATH const path(builder.id());
        if (auto const refusal = VERSION_CONTROL::current().prepare_write(path)) {
            error = *refusal;
            return false;
        }
        if (!save_asset_fragment_file(builder, error))
            return false;
        action.add_to_perforce(path, files, false, {});
    }
    return true;
}

}  // namespace framework
