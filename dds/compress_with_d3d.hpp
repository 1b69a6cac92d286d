// The D3D back-end: a working image becomes a DDS file through DirectXTex, for the block formats that only a DX10
// header can name: the sRGB forms, BC5, BC6H and BC7. Written against the library's interface alone; which library
// stands behind it is the build's choice (platform/directxtex).
#pragma once

#include "dds/compression_format.hpp"
#include "dds/output_line_sink.hpp"
#include "platform/image_loader/image.hpp"
#include "processor/host/physical_path.hpp"

/// Writes `target` with a full mip chain made from the top level of `image`, whatever levels it has of its own and
/// whatever the rule says of mip levels. `format` is one that `is_routed_to_d3d`. `image` has four 8-bit channels; only
/// blue first is taken, so PNG sources, whose working images have red first, fail here: deliberate.
/// `convert_colour_space` takes the colours into linear light before the levels are made; compress_image never asks for
/// that. False after one line that says why.
bool compress_with_d3d(OUTPUT_LINE_SINK& sink, PHYSICAL_PATH const& target, DXGI_CHOICE format,
                       IMAGE_LOADER::IMAGE const& image, bool need_gamma_correction, bool convert_colour_space);
