// The library's own promises, beyond what the actions show of them: formats by alpha, levels, places, messages.
#include "platform/tool_data_builder/texture_compressor.hpp"

#include "platform/image_loader/picture.hpp"
#include "platform/tool_data_builder/messages.hpp"
#include "tests/host/framework/test_folder.hpp"
#include "tests/support/test_tga.hpp"

#include <gtest/gtest.h>

namespace {

using QE::UniString;
using TOOLDATABUILDER::TEXTURE_COMPRESSOR;

QStringList messages;

class TEXTURE_COMPRESSOR_RUN : public testing::Test {
protected:
    TEXTURE_COMPRESSOR_RUN() {
        messages.clear();
        TOOLDATABUILDER::set_message_handler([](char const* text) { messages.append(QString::fromUtf8(text)); });
    }
    ~TEXTURE_COMPRESSOR_RUN() override { TOOLDATABUILDER::set_message_handler(nullptr); }

    void write(char const* name, int alpha_at_0, int width = 8) {
        folder.write(name, tga(width, 8, [&](int x, int y) {
                         return std::array{0, x < 4 ? 0 : 255, 255, x + y == 0 ? alpha_at_0 : 255};
                     }));
    }
    /// "DXT1 8x8/4": the code, the sides and the levels of a target.
    std::string described(char const* name) {
        std::string cause;
        auto const description = IMAGE_LOADER::describe(folder.path(name).toStdString(), cause);
        if (!description)
            return cause;
        QFile file(folder.path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QByteArray const header = file.read(128);
        return header.mid(84, 4).toStdString() + ' ' + std::to_string(int(header[16])) + 'x' +
               std::to_string(int(header[12])) + '/' + std::to_string(int(header[28]));
    }
    UniString base() { return folder.path().toStdWString(); }

    TEST_FOLDER folder;
};

TEST_F(TEXTURE_COMPRESSOR_RUN, one_tga) {
    write("opaque.v2.tga", 255);
    write("holes.tga", 0, 6);
    QDir().mkpath(folder.path("sub"));
    TEXTURE_COMPRESSOR compressor(base());
    UniString const other(L"other");
    EXPECT_TRUE(compressor.process_tga(L"", nullptr, L"opaque.v2.tga", false, true, false));
    EXPECT_EQ(described("opaque.v2.dds"), "DXT1 8x8/4");
    EXPECT_TRUE(compressor.process_tga(L"", &other, L"opaque.v2.tga", false, true, true));
    EXPECT_EQ(described("other.dds"), "DXT5 8x8/4");
    EXPECT_TRUE(compressor.process_tga(L"sub", nullptr, folder.path("holes.tga").toStdWString(), true, false, false));
    EXPECT_EQ(described("sub/holes.dds"), "DXT5 6x8/1");
    EXPECT_TRUE(messages.isEmpty()) << messages.join('|').toStdString();
    // Somebody may have put it there.
    EXPECT_FALSE(compressor.process_tga(L"", &other, L"holes.tga", false, true, false));
    EXPECT_EQ(described("other.dds"), "DXT5 8x8/4");
    messages.clear();

    std::string cause;
    auto const picture = IMAGE_LOADER::load_picture(folder.path("sub/holes.dds").toStdString(), 0, 0, cause);
    ASSERT_TRUE(picture) << cause;
    EXPECT_EQ(std::vector<std::uint8_t>(picture->rgba.begin(), picture->rgba.begin() + 4),
              (std::vector<std::uint8_t>{255, 0, 0, 0}));
    EXPECT_EQ(picture->rgba[4 * 5 + 1], 255);
}

TEST_F(TEXTURE_COMPRESSOR_RUN, format_by_alpha) {
    write("a.tga", 255);
    write("holes.tga", 0);
    folder.write("grey.tga", tga(8, 8, [](int, int) { return std::array{9, 9, 9, 255}; }));
    TEXTURE_COMPRESSOR compressor(base());
    // Alpha comes from red, which is 255 in the first two, whatever their own alpha.
    compressor.compress_to_optimal(L"a.tga", L"", L"", L"holes.tga", L"opaque.dds");
    EXPECT_EQ(described("opaque.dds"), "DXT1 8x8/4");
    compressor.compress_to_optimal(L"a.tga", L"", L"", L"", L"absent.dds");
    EXPECT_EQ(described("absent.dds"), "DXT1 8x8/4");
    compressor.compress_to_optimal(L"a.tga", L"", L"", L"grey.tga", L"varied.dds");
    EXPECT_EQ(described("varied.dds"), "DXT5 8x8/4");
    compressor.compress_to_dxt5_optional(L"", L"", L"a.tga", L"", L"five.dds");
    EXPECT_EQ(described("five.dds"), "DXT5 8x8/4");
    EXPECT_TRUE(messages.isEmpty()) << messages.join('|').toStdString();
}

TEST_F(TEXTURE_COMPRESSOR_RUN, failures_leave_what_was_there) {
    write("a.tga", 255);
    folder.write("t.dds", "earlier");
    TEXTURE_COMPRESSOR compressor(base());
    compressor.compress_to_dxt1(L"a.tga", L"gone.tga", L"", L"t.dds", true);
    EXPECT_EQ(messages.join('|').remove(folder.path() + '/'),
              "Required source 'gone.tga' does not exist|Source 3 of 't.dds' is required, and none was given");
    messages.clear();
    EXPECT_FALSE(compressor.process_tga(L"", nullptr, L"none.tga", false, true, false));
    EXPECT_EQ(messages.join('|').remove(folder.path() + '/'), "Failed to read 'none.tga': the file cannot be opened");
    messages.clear();
    compressor.compress_to_dxt1(L"a.tga", L"", L"", L"no/such/folder.dds", false);
    EXPECT_EQ(messages.join('|').remove(folder.path() + '/'),
              "Failed to write 'no/such/folder.dds': No such file or directory");
    QFile file(folder.path("t.dds"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "earlier");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), (QStringList{"a.tga", "t.dds"}));
}

}  // namespace
