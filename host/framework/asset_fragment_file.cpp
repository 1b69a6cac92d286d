#include "host/framework/asset_fragment_file.hpp"

#include "host/framework/version_control.hpp"
#include "platform/qe/replace_file.hpp"
#include "processor/host/paths.hpp"

#include <QFile>
#include <QXmlStreamWriter>

#include <fcntl.h>
#include <unistd.h>

namespace framework {

namespace {

QByteArray text_of(QTSHARED::ASSET_FRAGMENT_BUILDER const& builder) {
    QByteArray text;
    QXmlStreamWriter xml(&text);
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
    return text;
}

/// Whether a file of these very bytes stands there, and no link that leads to one.
bool is_there(QByteArray const& path, QByteArray const& bytes) {
    int const descriptor = ::open(path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    QFile file;
    bool const is_same = file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle) &&
                         file.size() == bytes.size() && file.read(bytes.size() + 1) == bytes;
    if (is_same && QE::output_root().written != nullptr)
        QE::output_root().written(path.constData(), descriptor);
    return is_same;
}

}  // namespace

bool save_asset_fragment_file(QTSHARED::ASSET_FRAGMENT_BUILDER const& builder, QString& error) {
    QByteArray const path = QFile::encodeName(builder.id());
    QByteArray const text = text_of(builder);
    // Fragments lie among the sources, where others look as well: a file is touched when it has to say something else.
    if (is_there(path, text))
        return true;
    std::string cause;
    std::span const bytes(reinterpret_cast<std::uint8_t const*>(text.constData()),
                          static_cast<std::size_t>(text.size()));
    if (QE::replace_file(path.toStdString(), bytes, cause))
        return true;
    error = QStringLiteral("Failed to write '%1': %2").arg(builder.id(), QString::fromLocal8Bit(cause.c_str()));
    return false;
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
