// FGA texts. What is read is held against the plain way: the whole text decoded and cut at its commas, and each number
// left to Qt.
#include "fga/float_to_half.hpp"
#include "fga/read_vector_field.hpp"
#include "fga/wrap_vector_field.hpp"
#include "fuzz/fuzz_input.hpp"

#include <QStringList>

namespace {

/// Decoding drops the mark at the start of the text, and numbers end at its commas, whatever stands between them.
QStringList plain_numbers(std::span<char const> text) {
    return QString::fromUtf8(text.data(), static_cast<int>(text.size())).split(u',', Qt::SkipEmptyParts);
}

std::uint16_t plain_half(QString const& number) {
    bool is_read = false;
    float const value = number.toFloat(&is_read);
    return float_to_half(is_read ? value : 0);
}

void check_texels(VECTOR_FIELD const& field, QStringList const& numbers) {
    int at = 9;
    for (UTILITYLIB::FLOAT16_4 const& texel : field.texels) {
        for (std::uint16_t const half : {texel.x, texel.y, texel.z})
            fuzz::require(half == plain_half(numbers[at++]), "a number is read as Qt reads it");
        fuzz::require(texel.w == 0, "the fourth half is 0");
    }
}

void check_wrapping(VECTOR_FIELD const& field) {
    std::size_t const width = field.size.x;
    std::size_t const height = field.size.y;
    std::size_t const depth = field.size.z;
    auto const at = [&](std::size_t x, std::size_t y, std::size_t z) {
        return field.texels[(z * height + y) * width + x];
    };
    for (std::size_t z = 0; z < depth; ++z)
        for (std::size_t y = 0; y < height; ++y)
            for (std::size_t x = 0; x < width; ++x)
                fuzz::require(at(x, y, z) ==
                                  at(x == width - 1 ? 0 : x, y == height - 1 ? 0 : y, z == depth - 1 ? 0 : z),
                              "the last sample of every axis is its first");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    std::string const text = fuzz::grown_text(bytes, size);
    QStringList const numbers = plain_numbers(text);
    fuzz::require(count_numbers(text) == static_cast<std::uint64_t>(numbers.size()),
                  "there is a number wherever something stands between commas");
    std::string cause;
    std::optional<VECTOR_FIELD> field = read_vector_field(text, cause);
    if (!field) {
        fuzz::require(!cause.empty(), "a refused text says why");
        return 0;
    }
    auto const [width, height, depth] = field->size;
    fuzz::require(width >= 2 && height >= 2 && depth >= 2 && numbers[0].toUInt() == width &&
                      numbers[1].toUInt() == height && numbers[2].toUInt() == depth,
                  "a field has the announced sides");
    fuzz::require(field->texels.size() == std::uint64_t{width} * height * depth &&
                      field->texels.size() * 3 + 9 <= static_cast<std::uint64_t>(numbers.size()),
                  "a field has as many vectors as its sides say, and the text has numbers for them");
    check_texels(*field, numbers);
    wrap_vector_field(*field);
    check_wrapping(*field);
    return 0;
}
