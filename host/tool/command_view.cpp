// zab view FILE: one picture of a texture file, as a PNG that any viewer shows.
#include "host/framework/printable.hpp"
#include "host/tool/command.hpp"
#include "host/tool/picture_file.hpp"

#include <CLI/CLI.hpp>

#include <QFileInfo>

namespace tool {

namespace {

class COMMAND_VIEW : public COMMAND {
public:
    char const* name() const override { return "view"; }
    char const* summary() const override { return "Write a picture of a texture file as a PNG"; }

    void declare(CLI::App& app) override {
        app.add_option("FILE", file_, "A TGA, PNG, JPG, TIF or DDS file")->required();
        app.add_option("-o,--output", output_,
                       "The PNG to write; without it NAME.png in this folder, where no file is overwritten")
            ->type_name("PNG");
        app.add_option("--level", level_, "Mip level, 0 (the default) is the largest")->type_name("N");
        app.add_option("--slice", slice_, "Slice of a volume, or element of an array")->type_name("N");
        app.add_option("--face", face_, "Face of a cube map: 0 to 5 are +X -X +Y -Y +Z -Z")->type_name("N");
    }

    EXIT_CODE run(CONTEXT& context) override {
        CONSOLE& console = context.console;
        QString const path = argument(file_);
        auto const fail = [&](std::string const& cause) {
            console.error(QStringLiteral("%1: %2").arg(framework::printable(path), QString::fromStdString(cause)));
            return EXIT_CODE::failed;
        };
        QString output = argument(output_);
        if (output.isEmpty()) {
            output = QFileInfo(path).completeBaseName() + QStringLiteral(".png");
            if (QFileInfo::exists(output)) {
                console.error(QStringLiteral("%1 exists; name a file with -o").arg(framework::printable(output)));
                return EXIT_CODE::wrong_use;
            }
        } else if (is_same_file(path, output)) {
            console.error(QStringLiteral("%1 would be overwritten by its own picture").arg(framework::printable(path)));
            return EXIT_CODE::wrong_use;
        }

        std::string cause;
        std::optional<IMAGE_LOADER::FILE_DESCRIPTION> const description =
            IMAGE_LOADER::describe(native_path(path), cause);
        if (!description)
            return fail(cause);
        QString const misfit = does_not_fit(*description);
        if (!misfit.isEmpty()) {
            console.error(QStringLiteral("%1: %2").arg(framework::printable(path), misfit));
            return EXIT_CODE::wrong_use;
        }
        std::uint32_t const place = slice_ * description->faces + face_;
        std::optional<IMAGE_LOADER::PICTURE> const picture =
            IMAGE_LOADER::load_picture(native_path(path), level_, place, cause);
        if (!picture)
            return fail(cause);
        if (!IMAGE_LOADER::write_png(native_path(output), *picture, cause)) {
            console.error(QStringLiteral("%1: %2").arg(framework::printable(output), QString::fromStdString(cause)));
            return EXIT_CODE::environment;
        }
        console.result(
            QStringLiteral("%1: %2 x %3")
                .arg(framework::printable(output), QString::number(picture->width), QString::number(picture->height)));
        return EXIT_CODE::success;
    }

private:
    static bool is_same_file(QString const& left, QString const& right) {
        std::error_code failure;
        return std::filesystem::equivalent(native_path(left), native_path(right), failure);
    }

    QString does_not_fit(IMAGE_LOADER::FILE_DESCRIPTION const& file) const {
        auto const count = [](char const* word, std::uint32_t asked, std::uint32_t there) {
            return QStringLiteral("there is no %1 %2: the file has %3").arg(QLatin1String(word)).arg(asked).arg(there);
        };
        if (level_ >= file.mips)
            return count("level", level_, file.mips);
        std::uint32_t slices = file.layers;
        // Each level of a volume has half the slices of the one above it.
        if (file.is_volume)
            slices = level_ < 32 ? std::max(1u, file.depth >> level_) : 1u;
        if (slice_ >= slices)
            return count("slice", slice_, slices);
        if (face_ >= file.faces)
            return count("face", face_, file.faces);
        return {};
    }

    std::string file_;
    std::string output_;
    std::uint32_t level_ = 0;
    std::uint32_t slice_ = 0;
    std::uint32_t face_ = 0;
};

}  // namespace

std::unique_ptr<COMMAND> make_command_view() {
    return std::make_unique<COMMAND_VIEW>();
}

}  // namespace tool
