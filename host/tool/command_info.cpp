// zab info FILE...: what texture files hold, from their headers.
#include "host/framework/printable.hpp"
#include "host/tool/command.hpp"
#include "host/tool/picture_file.hpp"

#include <CLI/CLI.hpp>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tool {

namespace {

using IMAGE_LOADER::FILE_DESCRIPTION;

QString text(std::string const& value) {
    return QString::fromStdString(value);
}

QString shape(FILE_DESCRIPTION const& file) {
    QString words = QStringLiteral("%1 x %2").arg(file.width).arg(file.height);
    if (file.is_volume)
        words += QStringLiteral(" x %1").arg(file.depth);
    if (file.is_cube)
        words += QStringLiteral(", cube map");
    if (file.layers > 1)
        words += QStringLiteral(", %1 layers").arg(file.layers);
    return words + (file.mips == 1 ? QStringLiteral(", 1 level") : QStringLiteral(", %1 levels").arg(file.mips));
}

QString in_words(FILE_DESCRIPTION const& file) {
    QString words = text(file.kind);
    if (!file.header_kind.empty())
        words += QStringLiteral(" (%1 header)").arg(text(file.header_kind));
    words += QStringLiteral(", %1, %2").arg(shape(file), text(file.format));
    if (file.is_srgb)
        words += QStringLiteral(", sRGB");
    words += file.has_alpha ? QStringLiteral(", alpha") : QStringLiteral(", no alpha");
    if (file.payload_expected > file.payload_actual)
        words += QStringLiteral("; truncated: %1 of %2 bytes").arg(file.payload_actual).arg(file.payload_expected);
    return words;
}

QJsonValue bytes(std::uint64_t count) {
    return static_cast<qint64>(count);
}

QJsonObject as_json(QString const& path, FILE_DESCRIPTION const& file) {
    return {
        {QStringLiteral("file"), path},
        {QStringLiteral("kind"), text(file.kind)},
        {QStringLiteral("header"), file.header_kind.empty() ? QJsonValue() : QJsonValue(text(file.header_kind))},
        {QStringLiteral("format"), text(file.format)},
        {QStringLiteral("width"), static_cast<qint64>(file.width)},
        {QStringLiteral("height"), static_cast<qint64>(file.height)},
        {QStringLiteral("depth"), static_cast<qint64>(file.depth)},
        {QStringLiteral("levels"), static_cast<qint64>(file.mips)},
        {QStringLiteral("faces"), static_cast<qint64>(file.faces)},
        {QStringLiteral("layers"), static_cast<qint64>(file.layers)},
        {QStringLiteral("cube"), file.is_cube},
        {QStringLiteral("volume"), file.is_volume},
        {QStringLiteral("srgb"), file.is_srgb},
        {QStringLiteral("alpha"), file.has_alpha},
        {QStringLiteral("payload_expected"), bytes(file.payload_expected)},
        {QStringLiteral("payload_actual"), bytes(file.payload_actual)},
    };
}

class COMMAND_INFO : public COMMAND {
public:
    char const* name() const override { return "info"; }
    char const* summary() const override { return "Show what texture files hold"; }

    void declare(CLI::App& app) override {
        app.add_option("FILE", files_, "TGA, PNG, JPG, TIF or DDS files")->required();
        app.add_flag("--json", json_, "As a JSON array, of the files that can be read");
    }

    EXIT_CODE run(CONTEXT& context) override {
        QJsonArray descriptions;
        bool all_read = true;
        for (std::string const& given : files_) {
            QString const path = argument(given);
            std::string cause;
            std::optional<FILE_DESCRIPTION> const file = IMAGE_LOADER::describe(native_path(path), cause);
            if (!file) {
                all_read = false;
                context.console.error(QStringLiteral("%1: %2").arg(framework::printable(path), text(cause)));
            } else if (json_) {
                descriptions.append(as_json(path, *file));
            } else {
                context.console.result(QStringLiteral("%1: %2").arg(framework::printable(path), in_words(*file)));
            }
        }
        if (json_)
            context.console.result(
                QString::fromUtf8(QJsonDocument(descriptions).toJson(QJsonDocument::Indented)).trimmed());
        return all_read ? EXIT_CODE::success : EXIT_CODE::failed;
    }

private:
    std::vector<std::string> files_;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<COMMAND> make_command_info() {
    return std::make_unique<COMMAND_INFO>();
}

}  // namespace tool
