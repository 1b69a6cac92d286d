// zab compare A B: the difference of two pictures of one size, per channel and pooled.
#include "host/framework/printable.hpp"
#include "host/tool/command.hpp"
#include "host/tool/picture_difference.hpp"
#include "host/tool/picture_file.hpp"

#include <CLI/CLI.hpp>

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace tool {

namespace {

class COMMAND_COMPARE : public COMMAND {
public:
    char const* name() const override { return "compare"; }
    char const* summary() const override { return "Measure the difference of two pictures (MSE and PSNR)"; }

    void declare(CLI::App& app) override {
        app.add_option("A", left_, "A TGA, PNG, JPG, TIF or DDS file; its largest level counts")->required();
        app.add_option("B", right_, "Another of the same size; for other sizes the exit status is 1")->required();
        app.add_flag("--json", json_, "As a JSON object; the PSNR of equal channels is null");
    }

    EXIT_CODE run(CONTEXT& context) override {
        CONSOLE& console = context.console;
        std::optional<IMAGE_LOADER::PICTURE> const left = load(console, left_);
        std::optional<IMAGE_LOADER::PICTURE> const right = load(console, right_);
        if (!left || !right)
            return EXIT_CODE::failed;
        if (left->width != right->width || left->height != right->height) {
            console.error(QStringLiteral("the sizes differ: %1 is %2 x %3, %4 is %5 x %6")
                              .arg(framework::printable(argument(left_)), QString::number(left->width),
                                   QString::number(left->height), framework::printable(argument(right_)),
                                   QString::number(right->width), QString::number(right->height)));
            return EXIT_CODE::failed;
        }
        PICTURE_DIFFERENCE const difference = measure_difference(*left, *right);
        std::pair<char const*, double> const rows[] = {
            {"red", difference.channels[0]},   {"green", difference.channels[1]}, {"blue", difference.channels[2]},
            {"alpha", difference.channels[3]}, {"rgb", difference.rgb},           {"rgba", difference.rgba},
        };
        if (json_) {
            QJsonObject object;
            for (auto const& [name, error] : rows)
                object.insert(QLatin1String(name), QJsonObject{{QStringLiteral("mse"), error},
                                                               {QStringLiteral("psnr"),
                                                                error > 0 ? QJsonValue(psnr(error)) : QJsonValue()}});
            console.result(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Indented)).trimmed());
            return EXIT_CODE::success;
        }
        console.result(QStringLiteral("            MSE   PSNR dB"));
        for (auto const& [name, error] : rows)
            console.result(QStringLiteral("%1 %2 %3")
                               .arg(QLatin1String(name), -5)
                               .arg(error, 9, 'f', 3)
                               .arg(error > 0 ? QString::number(psnr(error), 'f', 2) : QStringLiteral("equal"), 9));
        return EXIT_CODE::success;
    }

private:
    static std::optional<IMAGE_LOADER::PICTURE> load(CONSOLE& console, std::string const& given) {
        std::string cause;
        std::optional<IMAGE_LOADER::PICTURE> picture =
            IMAGE_LOADER::load_picture(native_path(argument(given)), 0, 0, cause);
        if (!picture)
            console.error(
                QStringLiteral("%1: %2").arg(framework::printable(argument(given)), QString::fromStdString(cause)));
        return picture;
    }

    std::string left_;
    std::string right_;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<COMMAND> make_command_compare() {
    return std::make_unique<COMMAND_COMPARE>();
}

}  // namespace tool
