// The image-information database of 100,000 textures: recording them, beside opening their files and taking the
// headers, and looking names up in the saved file.
#include "imagedb/action_image_info_db.hpp"
#include "platform/dds_container/dds_container.hpp"
#include "platform/image_loader/image_info_db_reader.hpp"
#include "processor/host/paths.hpp"
#include "tests/support/no_processor.hpp"
#include "tests/support/test_rules.hpp"

#include <benchmark/benchmark.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <deque>
#include <random>

namespace {

constexpr int texture_count = 100000;

class PROJECT {
public:
    PROJECT() {
        PATHS::set_roots(PHYSICAL_PATH(folder_.path() + "/raw"), PHYSICAL_PATH(folder_.path() + "/out"));
        QByteArray const texture = header();
        for (int i = 0; i < texture_count; ++i) {
            QString const name = QStringLiteral("textures/level_%1/rock_wall_%2.dds").arg(i % 100).arg(i);
            QString const path = folder_.path() + "/out/" + name;
            if (i < 100)
                QDir().mkpath(QFileInfo(path).path());
            QFile file(path);
            if (!file.open(QIODevice::WriteOnly) || file.write(texture) != texture.size())
                qFatal("cannot write %s", qPrintable(path));
            entries_.push_back({PHYSICAL_PATH(path), {}});
            files.insert(LOGICAL_PATH("<working>/" + name), &entries_.back());
            names.push_back(name.toStdString());
        }
    }

    QString database() const { return folder_.path() + "/out/img_db.bin"; }

    FILE_MAP files;
    std::vector<std::string> names;

private:
    static QByteArray header() {
        dds_container::DDS_DESCRIPTION description;
        description.width = description.height = 64;
        description.mip_count = 7;
        description.format = dds_container::DXGI::bc1_unorm;
        std::vector<std::vector<std::uint8_t>> levels;
        for (std::uint32_t side = 64; side > 0; side /= 2)
            levels.emplace_back(8 * std::max(side / 4, 1u) * std::max(side / 4, 1u));
        std::vector<std::span<std::uint8_t const>> const spans(levels.begin(), levels.end());
        std::string cause;
        auto const file = dds_container::write_dds(description, spans, cause);
        if (!file)
            qFatal("%s", cause.c_str());
        return QByteArray(reinterpret_cast<char const*>(file->data()), static_cast<int>(file->size()));
    }

    QTemporaryDir folder_;
    std::deque<FILE_ENTRY> entries_;
};

PROJECT const& project() {
    static PROJECT const made;
    return made;
}

void open_and_read(benchmark::State& state) {
    project();
    for (auto _ : state) {
        for (auto const& [path, entry] : project().files) {
            QFile file(entry->physical_path.text());
            char header[148];
            if (file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
                benchmark::DoNotOptimize(file.read(header, sizeof header));
        }
    }
}

void record_textures(benchmark::State& state) {
    project();
    NO_PROCESSOR processor;
    TEST_RULES const rules;
    for (auto _ : state) {
        ACTION_IMAGE_INFO_DB action(processor, {});
        action.run(project().files, rules);
    }
}

QByteArray const& database() {
    static QByteArray const bytes = [] {
        QFile file(project().database());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }();
    return bytes;
}

std::span<std::byte const> database_bytes() {
    return std::as_bytes(std::span(database().constData(), static_cast<std::size_t>(database().size())));
}

void open_database(benchmark::State& state) {
    for (auto _ : state) {
        IMAGE_LOADER::IMAGE_INFO_DB_READER reader;
        if (reader.open(database_bytes()) != nullptr)
            state.SkipWithError("no database");
    }
}

/// Names in no order, each one known.
void look_up(benchmark::State& state) {
    IMAGE_LOADER::IMAGE_INFO_DB_READER reader;
    reader.open(database_bytes());
    std::vector<std::string> names = project().names;
    std::shuffle(names.begin(), names.end(), std::mt19937(1));
    std::size_t next = 0;
    for (auto _ : state) {
        if (!reader.find(names[next]))
            state.SkipWithError("not found");
        next = next + 1 < names.size() ? next + 1 : 0;
    }
}

BENCHMARK(open_and_read)->Unit(benchmark::kMillisecond);
BENCHMARK(record_textures)->Unit(benchmark::kMillisecond);
BENCHMARK(open_database)->Unit(benchmark::kMillisecond);
BENCHMARK(look_up);

}  // namespace

BENCHMARK_MAIN();
