// zab imgdb FILE [NAME...]: the records of an image-information database, all of them or those of some images.
#include "host/framework/printable.hpp"
#include "host/tool/command.hpp"
#include "platform/image_loader/image_format.hpp"
#include "platform/image_loader/image_info_db_reader.hpp"

#include <CLI/CLI.hpp>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tool {

namespace {

using IMAGE_LOADER::IMAGE_INFO_DB_READER;
using IMAGE_LOADER::IMAGE_INFO_RECORD;

QString name_of(IMAGE_INFO_RECORD const& image) {
    return QString::fromUtf8(image.name.data(), static_cast<int>(image.name.size()));
}

QString format_of(IMAGE_INFO_RECORD const& image) {
    std::string_view const name =
        IMAGE_LOADER::texel_format_info(static_cast<IMAGE_LOADER::TEXTURE_TEXEL_FORMAT>(image.texel_format)).name;
    return QString::fromUtf8(name.data(), static_cast<int>(name.size()));
}

QString in_words(IMAGE_INFO_RECORD const& image) {
    QString const levels =
        image.number_of_mips == 1 ? QStringLiteral("1 level") : QStringLiteral("%1 levels").arg(image.number_of_mips);
    return QStringLiteral("%1: %2 x %3, %4, %5")
        .arg(framework::printable(name_of(image)), QString::number(image.width), QString::number(image.height),
             format_of(image), levels);
}

QJsonObject as_json(IMAGE_INFO_DB_READER const& database, IMAGE_INFO_RECORD const& image) {
    QJsonArray surfaces;
    for (std::uint32_t level = 0; level < image.number_of_mips; ++level) {
        IMAGE_LOADER::IMAGE_SURFACE_RECORD const surface = database.surface(image, level);
        surfaces.append(QJsonObject{{QStringLiteral("offset"), static_cast<qint64>(surface.offset)},
                                    {QStringLiteral("bytes"), static_cast<qint64>(surface.bytes)},
                                    {QStringLiteral("row_pitch"), static_cast<qint64>(surface.row_pitch)}});
    }
    return {
        {QStringLiteral("name"), name_of(image)},
        {QStringLiteral("width"), static_cast<qint64>(image.width)},
        {QStringLiteral("height"), static_cast<qint64>(image.height)},
        {QStringLiteral("format"), format_of(image)},
        {QStringLiteral("texel_format"), static_cast<qint64>(image.texel_format)},
        {QStringLiteral("image_format"), static_cast<qint64>(image.image_format)},
        {QStringLiteral("levels"), static_cast<qint64>(image.number_of_mips)},
        {QStringLiteral("surfaces"), surfaces},
    };
}

class COMMAND_IMGDB : public COMMAND {
public:
    char const* name() const override { return "imgdb"; }
    char const* summary() const override { return "Show the records of an image-information database"; }

    void declare(CLI::App& app) override {
        app.add_option("FILE", file_, "The database, as a build leaves it in the working folder")->required();
        app.add_option("NAME", names_, "Only these images, by their paths in the working folder");
        app.add_flag("--json", json_, "As a JSON array, with the place of every mip level");
    }

    EXIT_CODE run(CONTEXT& context) override {
        QString const path = argument(file_);
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            context.console.error(QStringLiteral("%1: %2").arg(framework::printable(path), file.errorString()));
            return EXIT_CODE::failed;
        }
        uchar const* const bytes = file.size() > 0 ? file.map(0, file.size()) : nullptr;
        IMAGE_INFO_DB_READER database;
        if (char const* const cause = database.open({reinterpret_cast<std::byte const*>(bytes),
                                                     bytes != nullptr ? static_cast<std::size_t>(file.size()) : 0})) {
            context.console.error(QStringLiteral("%1: %2").arg(framework::printable(path), QLatin1String(cause)));
            return EXIT_CODE::failed;
        }

        std::vector<IMAGE_INFO_RECORD> images;
        bool all_found = true;
        for (std::string const& name : names_) {
            std::optional<IMAGE_INFO_RECORD> const image = database.find(name);
            if (image) {
                images.push_back(*image);
            } else {
                all_found = false;
                context.console.error(QStringLiteral("%1: there is no image %2")
                                          .arg(framework::printable(path), framework::printable(argument(name))));
            }
        }
        for (std::uint32_t i = 0; names_.empty() && i < database.size(); ++i)
            images.push_back(database.image(i));
        show(context.console, database, images);
        return all_found ? EXIT_CODE::success : EXIT_CODE::failed;
    }

private:
    void show(CONSOLE& console, IMAGE_INFO_DB_READER const& database,
              std::vector<IMAGE_INFO_RECORD> const& images) const {
        QJsonArray array;
        for (IMAGE_INFO_RECORD const& image : images) {
            if (json_)
                array.append(as_json(database, image));
            else
                console.result(in_words(image));
        }
        if (json_)
            console.result(QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Indented)).trimmed());
    }

    std::string file_;
    std::vector<std::string> names_;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<COMMAND> make_command_imgdb() {
    return std::make_unique<COMMAND_IMGDB>();
}

}  // namespace tool
