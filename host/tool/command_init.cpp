// zab init [DIR]: the beginnings of a project. Nothing that exists is touched.
#include "host/tool/command.hpp"

#include "host/framework/printable.hpp"
#include "host/framework/project.hpp"

#include <CLI/CLI.hpp>

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace tool {

namespace {

constexpr char const* project_text =
    R"(# The project file. Every key is optional; what is commented out is what holds without it.

# [roots]                      # relative to this file's folder
# raw = "raw_data"             # source images
# working = "working_data"     # what is made of them

# [global]                     # rules for the project as a whole
# Retail = false

# [tables]                     # tables for processors, one XML file each
# texc_expansions = "db/texc_expansions.xml"

# [image_database]
# enabled = false              # true: a build ends with working_data/img_db.bin, a list of all textures

# [version_control]
# kind = "none"                # "none", "git" or "perforce"

# Rules say what becomes of the source images. They may stand here, for the whole raw folder, or in a zab_rules.toml in any
# folder of it. "zab rules" lists them all, "zab explain FILE" tells which hold for a file.
[[rule]]
name = "Texture"
TargetPath = "textures/{dir}"
CompressionFormat = "dxt1_or_dxt5"
)";

class COMMAND_INIT : public COMMAND {
public:
    char const* name() const override { return "init"; }
    char const* summary() const override { return "Make a new project"; }

    void declare(CLI::App& app) override {
        app.add_option("DIR", folder_,
                       "The project's folder, made when it is not there; without it the one of -C, or this one");
    }

    EXIT_CODE run(CONTEXT& context) override {
        std::string const given = !folder_.empty() ? folder_ : context.options.directory;
        QDir const folder(given.empty() ? QStringLiteral(".") : argument(given));
        QString const file = QDir::cleanPath(folder.filePath(QLatin1String(framework::project_file_name)));
        auto const fail = [&](EXIT_CODE code, QString const& text) {
            context.console.error(framework::printable(text));
            return code;
        };
        if (QFileInfo::exists(file) || QFileInfo(file).isSymLink())
            return fail(EXIT_CODE::wrong_use, QStringLiteral("%1 exists; it stays as it is").arg(file));
        QString const raw = folder.filePath(QStringLiteral("raw_data"));
        if (!QDir().mkpath(raw))
            return fail(EXIT_CODE::environment,
                        QStringLiteral("the folder %1 cannot be made").arg(QDir::cleanPath(raw)));
        QFile out(file);
        QByteArray const text(project_text);
        // The file may have come into being since: it is never opened over.
        if (!out.open(QIODevice::WriteOnly | QIODevice::NewOnly) || out.write(text) != text.size() || !out.flush())
            return fail(EXIT_CODE::environment,
                        QStringLiteral("%1 cannot be written: %2").arg(file, out.errorString()));
        context.console.result(framework::printable(file));
        return EXIT_CODE::success;
    }

private:
    std::string folder_;
};

}  // namespace

std::unique_ptr<COMMAND> make_command_init() {
    return std::make_unique<COMMAND_INIT>();
}

}  // namespace tool
