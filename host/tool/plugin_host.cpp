#include "host/tool/plugin_host.hpp"

#include "host/framework/absolute_path.hpp"
#include "processor/host/plugin_interface.hpp"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibrary>

#include <algorithm>

namespace tool {

QString PLUGIN_HOST::default_path() {
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../lib/zab/ZAB_Texture.so"));
}

bool PLUGIN_HOST::load(QString const& path, QString& error) {
    QString const file = framework::absolute_path(path);
    if (!QFileInfo(file).isFile()) {
        error = QStringLiteral("the plug-in %1 does not exist").arg(path);
        return false;
    }
    // Libraries that it links may keep threads; taking it out of memory under them would end badly.
    loader_.setLoadHints(QLibrary::PreventUnloadHint | QLibrary::ResolveAllSymbolsHint);
    loader_.setFileName(file);
    auto* const plugin = qobject_cast<PLUGIN_INTERFACE*>(loader_.instance());
    if (!plugin) {
        error =
            loader_.isLoaded()
                ? QStringLiteral("the library %1 is no plug-in of this program").arg(path)
                : QStringLiteral("the plug-in %1 cannot be loaded: %2").arg(path, loader_.errorString().simplified());
        return false;
    }
    for (PROCESSOR_INTERFACE* const processor : plugin->create_processors()) {
        if (!processor) {
            error = QStringLiteral("the plug-in %1 answered with a null processor").arg(path);
            return false;
        }
        processors_.emplace_back(processor);
    }
    std::stable_sort(processors_.begin(), processors_.end(),
                     [](auto const& left, auto const& right) { return left->priority() > right->priority(); });
    QLibrary library(file);
    image_database_ =
        reinterpret_cast<CREATE_IMAGE_DATABASE_ACTION*>(library.resolve(create_image_database_action_name));
    set_output_root_ = reinterpret_cast<SET_OUTPUT_ROOT*>(library.resolve(set_output_root_name));
    limit_simd_ = reinterpret_cast<LIMIT_SIMD*>(library.resolve(limit_simd_name));
    return true;
}

}  // namespace tool
