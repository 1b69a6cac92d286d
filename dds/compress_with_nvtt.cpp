#include "dds/compress_with_nvtt.hpp"

#include "dds/target_files.hpp"
#include "platform/checked_size.hpp"
#include "platform/dds_container/dds_container.hpp"
#include "platform/qe/fp_state.hpp"
#include "platform/qe/memory_file.hpp"

#include <QFile>

#include <nvtt/nvtt.h>

#include <array>
#include <cstdint>
#include <new>
#include <optional>
#include <string>

namespace {

using IMAGE_LOADER::IMAGE;

/// Turns the library's error codes into lines of the action.
class NVTT_ERROR_SINK : public nvtt::ErrorHandler {
public:
    explicit NVTT_ERROR_SINK(OUTPUT_LINE_SINK* sink) : sink_(sink) {}

    void error(nvtt::Error code) override { sink_->add_output_line(QLatin1String(text(code))); }

private:
    static char const* text(nvtt::Error code) {
        switch (static_cast<int>(code)) {
        case 1:
            return "Invalid Input to Compressor";
        case 2:
            return "Unsupported Feature";
        case 3:
            return "Cuda Error While Running Compressor";
        case 5:
            return "File Writing Error";
        default:
            return "Unknown Error During Compression";
        }
    }

    OUTPUT_LINE_SINK* sink_;
};

/// The library's default floating-point state while this lives.
class FOREIGN_FP_STATE {
public:
    FOREIGN_FP_STATE() { QE::set_fp_state(false); }
    FOREIGN_FP_STATE(FOREIGN_FP_STATE const&) = delete;
    FOREIGN_FP_STATE& operator=(FOREIGN_FP_STATE const&) = delete;
    ~FOREIGN_FP_STATE() { QE::set_fp_state(true); }
};

/// Whether the open file holds all that its header announces.
bool is_whole(int descriptor) {
    QFile file;
    std::array<std::uint8_t, dds_container::dx10_header_size> header{};
    if (!file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered))
        return false;
    qint64 const read = file.read(reinterpret_cast<char*>(header.data()), static_cast<qint64>(header.size()));
    if (read < 0)
        return false;
    std::string cause;
    auto const description = dds_container::read_dds_header({header.data(), static_cast<std::size_t>(read)}, cause);
    return description && static_cast<std::uint64_t>(file.size()) ==
                              description->header_size() + dds_container::payload_size(*description);
}

bool process(nvtt::Compressor const& compressor, nvtt::InputOptions const& input,
             nvtt::CompressionOptions const& compression, nvtt::OutputOptions const& output) {
    FOREIGN_FP_STATE const state;
    return compressor.process(input, compression, output);
}

/// The library does not look whether it gets the memory that it asks for, and ends the program where it does not. It
/// asks for up to this many bytes a texel of the largest level, so whether they can be had is tried first. Throws
/// std::bad_alloc.
void try_library_memory(IMAGE const& image) {
    constexpr std::uint32_t bytes_per_texel = 36;
    // Asked for by the function, since a compiler may leave out a `new` whose memory is not used.
    ::operator delete(::operator new(checked_size::memory_size(bytes_per_texel, image.width(), image.height())));
}

void set_mip_data(nvtt::InputOptions& input, IMAGE const& image, std::uint32_t source_level, int level) {
    input.setMipmapData(image.level(source_level).data(), static_cast<int>(image.level_width(source_level)),
                        static_cast<int>(image.level_height(source_level)), 1, 0, level);
}

void set_mip_filter(nvtt::InputOptions& input, QString const& name) {
    // Any other name leaves the library's own default.
    if (name == QLatin1String("box"))
        input.setMipmapFilter(nvtt::MipmapFilter_Box);
    else if (name == QLatin1String("triangle"))
        input.setMipmapFilter(nvtt::MipmapFilter_Triangle);
    else if (name == QLatin1String("kaiser"))
        input.setMipmapFilter(nvtt::MipmapFilter_Kaiser);
}

}  // namespace

bool compress_with_nvtt(OUTPUT_LINE_SINK& sink, PHYSICAL_PATH const& target, BACK_END_SETTINGS const& settings,
                        IMAGE const& image, std::vector<IMAGE> const& chain) {
    try_library_memory(image);
    nvtt::InputOptions input;
    input.setTextureLayout(nvtt::TextureType_2D, static_cast<int>(image.width()), static_cast<int>(image.height()), 1);
    input.setMipmapGeneration(settings.mipmaps || !chain.empty(), -1);
    std::uint32_t const own_levels = settings.mipmaps && chain.empty() ? image.number_of_mips() : 1;
    for (std::uint32_t level = 0; level < own_levels; ++level)
        set_mip_data(input, image, level, static_cast<int>(level));
    for (std::size_t i = 0; i < chain.size(); ++i)
        set_mip_data(input, chain[i], 0, static_cast<int>(i) + 1);

    input.setNormalMap(settings.normal_map);
    input.setConvertToNormalMap(false);
    if (settings.need_gamma_correction) {
        // Deliberate: the same gamma on both sides, the inverse of the output's for colours.
        float const gamma = settings.normal_map ? settings.input_gamma : 1.0F / settings.output_gamma;
        input.setGamma(gamma, gamma);
    }
    input.setNormalizeMipmaps(settings.normal_map);
    set_mip_filter(input, settings.mip_filter);

    nvtt::CompressionOptions compression;
    compression.setFormat(static_cast<nvtt::Format>(settings.format));
    compression.setQuality(settings.fastest_quality ? nvtt::Quality_Fastest : nvtt::Quality_Highest);
    if (settings.format == NVTT_FORMAT::dxt1_one_bit_alpha)
        compression.setQuantization(false, false, true, 127);

    nvtt::Compressor compressor;
    compressor.enableCudaAcceleration(true);

    NVTT_ERROR_SINK errors(&sink);
    std::string cause;
    std::optional<QE::OUTPUT_FILE> file = QE::OUTPUT_FILE::open(native_target(target), cause);
    if (!file) {
        errors.error(nvtt::Error_FileOpen);
        return false;
    }
    // The library opens files by name, whatever has that name by then.
    QE::MEMORY_FILE made;
    if (!made.is_open())
        throw std::bad_alloc();
    nvtt::OutputOptions output;
    output.setFileName(made.name().c_str());
    output.setErrorHandler(&errors);

    if (!process(compressor, input, compression, output))
        return false;
    // The library does not look whether its writes arrive.
    if (!is_whole(made.descriptor()) || !file->write_all_of(made.descriptor(), cause) || !file->commit(cause)) {
        errors.error(nvtt::Error_FileWrite);
        return false;
    }
    return true;
}
