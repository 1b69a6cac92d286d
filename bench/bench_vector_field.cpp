// A vector field of 128 x 128 x 128 (some 60 MB of text) beside the least that any reader must do: having the file's
// bytes and looking at each of them, once as a whole and once for the commas.
#include "fga/action_fga.hpp"
#include "fga/read_vector_field.hpp"
#include "processor/host/paths.hpp"
#include "tests/support/no_processor.hpp"
#include "tests/support/test_rules.hpp"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QTemporaryDir>

#include <cstring>
#include <memory>
#include <random>

namespace {

constexpr int side = 128;

class FIELD_FILE {
public:
    FIELD_FILE() {
        std::mt19937 random(1);
        QByteArray text = QByteArray::number(side) + ",128,128,-100,-100,-100,100,100,100,\n";
        std::uniform_real_distribution<double> values(-20, 20);
        for (int i = 0; i < side * side * side; ++i) {
            for (int channel = 0; channel < 3; ++channel)
                text += QByteArray::number(values(random), 'f', 6) + ',';
            text += '\n';
        }
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("cannot write %s", qPrintable(path()));
    }

    QString path() const { return folder_.filePath("field.fga"); }
    QString folder() const { return folder_.path(); }

private:
    QTemporaryDir folder_;
};

FIELD_FILE const& field_file() {
    static FIELD_FILE const file;
    return file;
}

std::vector<char> read_text() {
    QFile file(field_file().path());
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        qFatal("cannot read %s", qPrintable(field_file().path()));
    std::vector<char> text(static_cast<std::size_t>(file.size()));
    file.read(text.data(), file.size());
    return text;
}

void read_and_scan(benchmark::State& state) {
    field_file();
    for (auto _ : state) {
        std::vector<char> const text = read_text();
        benchmark::DoNotOptimize(count_numbers(text));
        state.SetBytesProcessed(state.bytes_processed() + static_cast<std::int64_t>(text.size()));
    }
}

void read_field(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<char> const text = read_text();
        std::string cause;
        benchmark::DoNotOptimize(read_vector_field(text, cause));
        state.SetBytesProcessed(state.bytes_processed() + static_cast<std::int64_t>(text.size()));
    }
}

/// The bytes alone, and one look for one that is not among them.
void read_and_look(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<char> const text = read_text();
        benchmark::DoNotOptimize(std::memchr(text.data(), '#', text.size()));
        state.SetBytesProcessed(state.bytes_processed() + static_cast<std::int64_t>(text.size()));
    }
}

/// All that a build does: reading, wrapping, and writing the texture.
void convert_field(benchmark::State& state) {
    PATHS::set_roots(PHYSICAL_PATH(field_file().folder()), PHYSICAL_PATH(field_file().folder() + "/out"));
    NO_PROCESSOR processor;
    FILE_MAP const files;
    TEST_RULES const rules;
    for (auto _ : state) {
        ACTION_FGA action(PHYSICAL_PATH(field_file().path()), processor);
        if (action.run(files, rules) != ACTION_INTERFACE::STATUS_SUCCEEDED)
            state.SkipWithError("not converted");
        state.SetBytesProcessed(state.bytes_processed() + QFile(field_file().path()).size());
    }
}

BENCHMARK(read_and_scan)->Unit(benchmark::kMillisecond);
BENCHMARK(read_and_look)->Unit(benchmark::kMillisecond);
BENCHMARK(read_field)->Unit(benchmark::kMillisecond);
BENCHMARK(convert_field)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
