// Headers of images as the tool looks at them before it hands the files to a worker: nothing in them may bring down the
// process that must survive.
#include "fuzz/fuzz_input.hpp"
#include "host/tool/memory_estimate.hpp"
#include "platform/checked_size.hpp"
#include "platform/dds_container/dds_container.hpp"

#include <QString>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    fuzz::INPUT_FILE const input(bytes, size);
    std::optional<std::uint64_t> const texels = tool::announced_texels(QString::fromStdString(input.path()));
    fuzz::require(size > 0 || !texels, "an empty file announces nothing");
    std::string cause;
    if (auto const dds = dds_container::read_dds_header({bytes, size}, cause))
        fuzz::require(texels && *texels >= checked_size::saturating_product(dds->width, dds->height, dds->depth),
                      "no sound file is taken for a smaller one");
    return 0;
}
