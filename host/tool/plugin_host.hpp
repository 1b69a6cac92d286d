// The plug-in library and its processors. Action classes are reached through it alone: the tool knows none by name.
#pragma once

#include "processor/host/image_database_entry.hpp"
#include "processor/host/processor_interface.hpp"
#include "processor/host/simd_entry.hpp"

#include <QPluginLoader>

#include <memory>
#include <vector>

namespace tool {

class PLUGIN_HOST {
public:
    /// False, with one line that names the file and the cause, when the plug-in cannot be used.
    bool load(QString const& path, QString& error);

    /// Sorted by descending priority. Valid after a successful load, as long as this object.
    std::vector<std::unique_ptr<PROCESSOR_INTERFACE>> const& processors() const { return processors_; }

    /// Makes the actions of the database step; null when the plug-in has none.
    CREATE_IMAGE_DATABASE_ACTION* image_database() const { return image_database_; }

    /// Keeps the encoders from newer instruction sets; null when the plug-in has none to keep.
    LIMIT_SIMD* limit_simd() const { return limit_simd_; }

    /// The plug-in that comes with this program: "../lib/zab/ZAB_Texture.so" beside its folder.
    static QString default_path();

private:
    QPluginLoader loader_;
    std::vector<std::unique_ptr<PROCESSOR_INTERFACE>> processors_;
    CREATE_IMAGE_DATABASE_ACTION* image_database_ = nullptr;
    LIMIT_SIMD* limit_simd_ = nullptr;
};

}  // namespace tool
