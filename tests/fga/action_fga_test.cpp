#include "fga/action_fga.hpp"
#include "fga/float_to_half.hpp"
#include "fga/wrap_vector_field.hpp"
#include "platform/dds_container/dds_container.hpp"
#include "processor/host/paths.hpp"
#include "tests/host/framework/test_folder.hpp"
#include "tests/support/full_disk.hpp"
#include "tests/support/no_processor.hpp"
#include "tests/support/test_rules.hpp"

#include <QtEndian>

#include <gtest/gtest.h>

namespace {

class action_fga : public testing::Test {
protected:
    action_fga() { PATHS::set_roots(PHYSICAL_PATH(folder.path("raw")), PHYSICAL_PATH(folder.path("out"))); }

    /// Vector i holds (i, -i, i / 2).
    static QByteArray field(int x, int y, int z) {
        QByteArray text =
            QByteArray::number(x) + ',' + QByteArray::number(y) + ',' + QByteArray::number(z) + ",-1,-1,-1,1,1,1,\n";
        for (int i = 0; i < x * y * z; ++i)
            text += QByteArray::number(i) + ",-" + QByteArray::number(i) + ',' + QByteArray::number(i / 2.0) + ",\n";
        return text;
    }

    int run(QByteArray const& text) {
        ACTION_FGA action(PHYSICAL_PATH(folder.write("raw/d/wind.v2.fga", text)), processor);
        EXPECT_EQ(action.get_name(false), "Convert FGA");
        EXPECT_EQ(action.get_name(true), "Convert FGA (wind.v2.fga)");
        target = action.get_target();
        int const status = action.run(files, rules);
        lines = action.output_lines().join('|').replace(folder.path() + '/', "");
        return status;
    }
    QByteArray written() const {
        QFile file(target);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    TEST_FOLDER folder;
    NO_PROCESSOR processor;
    FILE_MAP files;
    TEST_RULES rules;
    QString target;
    QString lines;
};

TEST_F(action_fga, volume_that_wraps) {
    constexpr int x = 4;
    constexpr int y = 3;
    constexpr int z = 2;
    ASSERT_EQ(run(field(x, y, z)), ACTION_INTERFACE::STATUS_SUCCEEDED) << lines.toStdString();
    EXPECT_EQ(lines, "");
    EXPECT_EQ(target, folder.path("out/d/wind.v2.dds"));
    QByteArray const dds = written();
    ASSERT_EQ(dds.size(), 320);
    QByteArray header(128, '\0');
    struct FIELD {
        int offset;
        quint32 value;
    };
    for (auto const& [offset, value] : {FIELD{0, 0x20534444},
                                        {4, 124},
                                        {8, 0x00800000},
                                        {12, 3},
                                        {16, 4},
                                        {24, 2},
                                        {76, 32},
                                        {80, 4},
                                        {84, 113},
                                        {108, 8},
                                        {112, 0x00200000}})
        qToLittleEndian(value, header.data() + offset);
    EXPECT_EQ(dds.left(128), header);
    for (int i = 0; i < x * y * z; ++i) {
        int const from = ((i / (x * y)) % (z - 1) * y + (i / x % y) % (y - 1)) * x + (i % x) % (x - 1);
        auto const value = static_cast<float>(from);
        for (auto const& [channel, expected] : {std::pair(0, value), {1, -value}, {2, value / 2}, {3, 0.0F}})
            EXPECT_EQ(qFromLittleEndian<quint16>(dds.constData() + 128 + 8 * i + 2 * channel), float_to_half(expected))
                << i << ' ' << channel;
    }
    std::string cause;
    auto const description = dds_container::read_dds(
        {reinterpret_cast<std::uint8_t const*>(dds.constData()), static_cast<std::size_t>(dds.size())}, cause);
    ASSERT_TRUE(description) << cause;
    EXPECT_TRUE(description->is_volume);
    EXPECT_EQ(description->depth, 2u);
}

TEST_F(action_fga, refusals_name_the_file_and_leave_nothing) {
    // The line break behind the last comma is a number, too, as the rule has it.
    EXPECT_EQ(run(field(2, 2, 2).replace(",\n7,-7,", ",")), ACTION_INTERFACE::STATUS_FAILED);
    EXPECT_EQ(lines, "Failed to read 'raw/d/wind.v2.fga': it announces 2 x 2 x 2 vectors, which take 24 numbers, and "
                     "holds 23 numbers for them");
    EXPECT_EQ(run("2,1,2,0,0,0,1,1,1"), ACTION_INTERFACE::STATUS_FAILED);
    EXPECT_EQ(lines,
              "Failed to read 'raw/d/wind.v2.fga': it announces 2 x 1 x 2 vectors, of which no side may be below 2, "
              "and holds 0 numbers for them");
    // A hole of that size takes no room on the disk.
    QFile large(folder.write("raw/large.fga", "2,2,2,"));
    ASSERT_TRUE(large.open(QIODevice::ReadWrite) && large.resize((qint64{8} << 30) + 1));
    ACTION_FGA on_large(PHYSICAL_PATH(large.fileName()), processor);
    EXPECT_EQ(on_large.run(files, rules), ACTION_INTERFACE::STATUS_FAILED);
    EXPECT_TRUE(on_large.output_lines().join('|').endsWith("/raw/large.fga': it is larger than 8 GiB"));
    ASSERT_EQ(run(field(5, 5, 5)), ACTION_INTERFACE::STATUS_SUCCEEDED);
    ACTION_FGA again(PHYSICAL_PATH(folder.path("raw/d/wind.v2.fga")), processor);
    FULL_DISK const disk(1000);
    EXPECT_EQ(again.run(files, rules), ACTION_INTERFACE::STATUS_FAILED);
    EXPECT_TRUE(again.output_lines().join('|').startsWith("Failed to write '" + target + "': "));
    EXPECT_EQ(QDir(folder.path("out/d")).entryList(QDir::Files), QStringList());
}

TEST_F(action_fga, files_that_cannot_be_opened) {
    ACTION_FGA gone(PHYSICAL_PATH(folder.path("raw/none.fga")), processor);
    EXPECT_FALSE(gone.convert(gone.source(), gone.get_target(), rules, files));
    ACTION_FGA action(PHYSICAL_PATH(folder.write("raw/a.fga", field(2, 2, 2))), processor);
    EXPECT_TRUE(action.convert(action.source(), PHYSICAL_PATH(folder.path("no folder/a.dds")), rules, files));
    EXPECT_TRUE(gone.output_lines().isEmpty() && action.output_lines().isEmpty());
}

TEST(wrap_vector_field, smallest_field_is_sample_0_all_over) {
    VECTOR_FIELD field{{2, 2, 2}, std::vector<UTILITYLIB::FLOAT16_4>(8)};
    for (std::uint16_t i = 0; i < 8; ++i)
        field.texels[i].x = static_cast<std::uint16_t>(i + 1);
    wrap_vector_field(field);
    EXPECT_EQ(field.texels, std::vector(8, UTILITYLIB::FLOAT16_4{1, 0, 0, 0}));
}

}  // namespace
