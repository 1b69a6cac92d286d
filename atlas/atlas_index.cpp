#include "atlas/atlas_index.hpp"

#include "atlas/native_file_path.hpp"
#include "platform/qe/replace_file.hpp"

#include <QFileInfo>
#include <QTemporaryFile>

#include <array>
#include <charconv>
#include <string_view>

namespace {

std::string last_section(std::string const& path) {
    std::size_t const end = path.find_last_of("/\\");
    return end == std::string::npos ? path : path.substr(end + 1);
}

/// As printf's "%.6f" writes it in the C locale; the host may have set another one.
void append_number(std::string& text, float value) {
    std::array<char, 64> digits;
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<double>(value),
                                   std::chars_format::fixed, 6);
    text.append(digits.data(), end.ptr);
}

/// What one line says of a source besides its name.
struct INDEX_ENTRY {
    std::string atlas_file_name;
    std::int32_t atlas_index = -1;
    std::string_view type = "2D";
    float left = 0;
    float top = 0;
    float depth = 0;
    float width = 0;
    float height = 0;
};

/// A source without a page stands for itself.
INDEX_ENTRY entry_without_page(ATLAS_SOURCE_TEXTURE const& texture, float half_texel) {
    INDEX_ENTRY entry;
    entry.atlas_file_name = last_section(texture.file_name());
    entry.left = half_texel / static_cast<float>(texture.width());
    entry.top = half_texel / static_cast<float>(texture.height());
    entry.width = 1 - 2 * entry.left;
    entry.height = 1 - 2 * entry.top;
    return entry;
}

INDEX_ENTRY entry_in_page(ATLAS_SOURCE_TEXTURE const& texture, ATLAS_PAGE const& page, float half_texel) {
    INDEX_ENTRY entry;
    std::string& name = entry.atlas_file_name;
    name = last_section(page.file_name());
    // Pages that are saved as Targa are compressed before a game sees them.
    if (name.size() > 3 && name.ends_with("tga"))
        name.replace(name.size() - 3, 3, "dds");
    entry.atlas_index = page.page_index();

    ATLAS_REGION const& region = texture.region();
    float const across = 1 / static_cast<float>(page.width());
    float const down = 1 / static_cast<float>(page.height());
    entry.left = static_cast<float>(region.left) * across + across * half_texel;
    entry.top = static_cast<float>(region.top) * down + down * half_texel;
    entry.width = static_cast<float>(region.width) * across - across * half_texel * 2;
    entry.height = static_cast<float>(region.height) * down - down * half_texel * 2;
    entry.depth = static_cast<float>(region.slice);
    switch (page.type()) {
    case ATLAS_TYPE::page_2d:
        break;
    case ATLAS_TYPE::page_volume:
        // A volume of one slice is read as a plain texture.
        if (page.depth() != 1) {
            entry.type = "Volume";
            entry.depth = (static_cast<float>(region.slice) + 0.5F) / static_cast<float>(page.depth());
        }
        break;
    case ATLAS_TYPE::page_cube:
        entry.type = "Cube";
        break;
    default:
        entry.type = "Unknown";
        break;
    }
    return entry;
}

std::string header(std::string const& base_name) {
    return "# " + base_name +
           ".tai\n"
           "# Created with ZAB\n"
           "#\n"
           "# <filename>\t\t<atlas filename>, <atlas idx>, <atlas type>, <woffset>, <hoffset>, <depth offset>, "
           "<width>, "
           "<height>\n"
           "#\n"
           "# Texture <filename> can be found in texture atlas <atlas filename>, i.e., \n"
           "# " +
           base_name +
           "<idx>.dds of <atlas type> type with texture coordinates boundary given by:\n"
           "#   A = ( <woffset>, <hoffset> )\n"
           "#   B = ( <woffset> + <width>, <hoffset> + <height> )\n"
           "#\n"
           "# where coordinates (0,0) and (1,1) of the original texture map correspond\n"
           "# to coordinates A and B, respectively, in the texture atlas.\n"
           "# If the atlas is a volume texture then <depth offset> is the w-coordinate\n"
           "# to use the access the appropriate slice in the volume atlas.\n"
           "\n";
}

std::string line(ATLAS_SOURCE_TEXTURE const& texture, float half_texel) {
    INDEX_ENTRY const entry = texture.page() != nullptr ? entry_in_page(texture, *texture.page(), half_texel)
                                                        : entry_without_page(texture, half_texel);
    std::string text = last_section(texture.file_name()) + "\t\t" + entry.atlas_file_name + ", " +
                       std::to_string(entry.atlas_index) + ", ";
    text += entry.type;
    for (float const number : {entry.left, entry.top, entry.depth, entry.width, entry.height}) {
        text += ", ";
        append_number(text, number);
    }
    return text + '\n';
}

/// A new file beside it is opened in its stead: what stands there is replaced only when all is written.
bool can_be_opened(QString const& path) {
    QTemporaryFile beside(path.section(QLatin1Char('/'), 0, -2) + QStringLiteral("/XXXXXX.part"));
    return !QFileInfo(path).isDir() && beside.open();
}

}  // namespace

std::string atlas_index_text(std::map<D3D_FORMAT, ATLAS_GROUP> const& groups, std::string const& base_name,
                             bool has_half_texel) {
    std::string text = header(base_name);
    for (auto const& [format, group] : groups) {
        for (ATLAS_SOURCE_TEXTURE const* const texture : group)
            text += line(*texture, has_half_texel ? 0.5F : 0.0F);
    }
#ifdef _WIN32
    std::string with_returns;
    for (char const c : text)
        with_returns.append(c == '\n' ? "\r\n" : std::string(1, c));
    return with_returns;
#else
    return text;
#endif
}

bool write_atlas_index(OUTPUT_LINE_SINK& sink, QString const& path, std::string const& text) {
    std::string cause;
    bool const is_opened = can_be_opened(path);
    if (is_opened)
        sink.add_output_line(QStringLiteral("Saving file: ") + path);
    if (!is_opened || !QE::replace_file(native_file_path(path),
                                        {reinterpret_cast<std::uint8_t const*>(text.data()), text.size()}, cause)) {
        sink.add_output_line(QStringLiteral("*** Error: Unable to open file \"") + path +
                             QStringLiteral("\" for writing!"));
        return false;
    }
    return true;
}
