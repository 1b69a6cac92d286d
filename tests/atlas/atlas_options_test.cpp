// Option lists: what is read, and every text of what is wrong with them.
#include "tests/atlas/textures.hpp"

#include <gtest/gtest.h>

namespace {

std::string const usage =
    "\nUsage: TextureAtlasTool.exe -h -help -? -nomipmap -volume -halftexel -width <w> -height <h> -depth <d> "
    "-o <filename> <img1> <img2> ...\n"
    "   -h              prints this usage help\n"
    "   -help           prints this usage help\n"
    "   -?              prints this usage help\n"
    "   -nomipmap       only writes out the top-level mipmap\n"
    "   -volume         only valid w/ -nomipmap; make atlases volume textures\n"
    "   -halftexel      adds a half-texel offset to the generated texture coordinates\n"
    "   -width <w>      limits texture atlases to a maximum width of w texels\n"
    "   -height <h>     limits texture atlases to a maximum height of h texels\n"
    "   -depth <d>      limits texture atlases to a maximum depth of d slices\n"
    "   -o <filename>   mandatory option that specifies output filename\n"
    "\nFor example: TextureAtlasTool.exe -halftexel -o Default Textures\\*.png\n\n";

std::string error(std::string const& text) {
    return "*** Error: " + text + '\n' + usage;
}

std::string size_error(std::string const& option, std::string const& what) {
    return error(option + " option requires argument to be " + what + '.');
}

TEST(atlas_options, messages_and_validity) {
    std::string const integer = "an integer greater than 1";
    std::string const power = "a power of 2";
    struct CASE {
        std::vector<std::string> arguments;
        bool is_valid;
        std::string messages;
    };
    CASE const cases[] = {
        {{"-o", "out", "a.png"}, true, ""},
        {{"-WIDTH", "512", "-hEIGHT", "0x40", "-O", "out", "a.png"}, true, ""},
        {{"-o", "out", "-?", "a.png"}, true, usage},
        {{}, false, error("No texture filenames specified.")},
        {{"-o", "out"}, false, error("No texture filenames specified.")},
        {{"-o"}, false, error("No texture filenames specified.")},
        {{"a.png", "-o", "out"}, false, error("-o <filename> option has to be set.")},
        {{"-width", "3", "-o", "out", "a"}, false, size_error("-width <w>", power)},
        {{"-width", "1", "-o", "out", "a"}, false, size_error("-width <w>", integer)},
        {{"-height", "wide", "-o", "out", "a"}, false, size_error("-height <h>", integer)},
        {{"-height", "010", "-o", "out", "a"}, true, ""},
        {{"-height", "0100x", "-width", "99999999999", "-o", "out", "a"}, true, ""},
        {{"-height", "-8", "-width", "6", "-o", "out", "a"}, false, size_error("-width <w>", power)},
        {{"-volume", "-o", "out", "a"}, false, error("-volume option requires -nomipmap option to be set.")},
        {{"-volume", "-nomipmap", "-depth", "12", "-o", "out", "a"}, false, size_error("-depth <d>", power)},
        {{"-volume", "-nomipmap", "-width", "5", "-height", "7", "-depth", "4", "-o", "out", "a"},
         true,
         "Warning: -volume currently uses the passed in texture's width and thus ignores -width <w>\n"
         "Warning: -volume currently uses the passed in texture's height and thus ignores -height <h>\n"},
        {{"-depth", "5", "-o", "out", "a"},
         true,
         "Warning: -depth <d> specified, yet -volume is not specified: ignoring -depth <d>\n"},
        {{"-width", "8", "-o", "out", "-Width", "16", "a"},
         true,
         "Warning: Option '-width <w>' specified multiple times on the cmd-line:\n"
         "Warning:          Only keeping the last value.\n"},
    };
    for (CASE const& test : cases) {
        SCOPED_TRACE(testing::PrintToString(test.arguments));
        testing::internal::CaptureStderr();
        bool const is_valid = options_of(test.arguments).valid();
        EXPECT_EQ(testing::internal::GetCapturedStderr(), test.messages);
        EXPECT_EQ(is_valid, test.is_valid);
    }
}

TEST(atlas_options, every_power_of_two_is_one) {
    for (int exponent = 1; exponent < 31; ++exponent)
        EXPECT_TRUE(options_of({"-width", std::to_string(1 << exponent), "-o", "out", "a"}).valid()) << exponent;
}

TEST(atlas_options, what_was_read) {
    testing::internal::CaptureStderr();
    ATLAS_OPTIONS const options =
        options_of({"-halftexel", "-width", "8", "-width", "0x10", "-o", "a.png", "b.png", "-volume", "c.png"});
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(options.is_set(ATLAS_OPTION::half_texel));
    EXPECT_FALSE(options.is_set(ATLAS_OPTION::volume));
    EXPECT_EQ(options.number(ATLAS_OPTION::width), 16);
    EXPECT_EQ(options.number(ATLAS_OPTION::height), std::nullopt);
    EXPECT_EQ(*options.argument(ATLAS_OPTION::output), "a.png");
    EXPECT_EQ(options.argument(ATLAS_OPTION::half_texel), nullptr);
    EXPECT_EQ(std::vector(options.file_names().begin(), options.file_names().end()),
              (std::vector<std::string>{"b.png", "-volume", "c.png"}));
}

}  // namespace
