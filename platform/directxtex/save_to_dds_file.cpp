#include "platform/directxtex/operations.hpp"

#include "platform/dds_container/dds_container.hpp"
#include "platform/qe/native_path.hpp"
#include "platform/qe/replace_file.hpp"

#include <exception>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace DirectX {

HRESULT SaveToDDSFile(Image const* images, std::size_t image_count, TexMetadata const& metadata, DDS_FLAGS flags,
                      wchar_t const* path) noexcept {
    if (images == nullptr || path == nullptr || image_count != metadata.mipLevels) {
        return E_INVALIDARG;
    }
    using dds_container::HEADER_KIND;
    try {
        dds_container::DDS_DESCRIPTION description;
        description.width = static_cast<std::uint32_t>(metadata.width);
        description.height = static_cast<std::uint32_t>(metadata.height);
        description.mip_count = static_cast<std::uint32_t>(metadata.mipLevels);
        description.format = static_cast<dds_container::DXGI>(metadata.format);
        std::vector<std::span<std::uint8_t const>> surfaces;
        for (std::size_t i = 0; i < image_count; ++i) {
            surfaces.emplace_back(images[i].pixels, images[i].slicePitch);
        }
        std::string cause;
        std::optional<std::vector<std::uint8_t>> file;
        if ((flags & DDS_FLAGS_FORCE_DX10_EXT) == 0) {
            description.header_kind = HEADER_KIND::legacy;
            file = dds_container::write_dds(description, surfaces, cause);
        }
        if (!file) {
            description.header_kind = HEADER_KIND::dx10;
            file = dds_container::write_dds(description, surfaces, cause);
        }
        if (!file) {
            return E_INVALIDARG;
        }
        return QE::replace_file(QE::native_path(path), *file, cause) ? S_OK : E_FAIL;
    } catch (std::bad_alloc const&) {
        return E_OUTOFMEMORY;
    } catch (std::exception const&) {
        // A path that is not Unicode.
        return E_INVALIDARG;
    }
}

}  // namespace DirectX
