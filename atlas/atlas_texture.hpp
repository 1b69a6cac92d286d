// The records that the atlas builder works with: every texture has a name, a kind, a size and a format, whether it is a
// source that goes into a page or a page that sources go into.
#pragma once

#include "atlas/d3d_format.hpp"
#include "atlas/pixel_buffer.hpp"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

class ATLAS_PAGE;

/// The numbers are part of the record; pages other than these have no name in the index.
enum class ATLAS_TYPE : std::int32_t { source = 1, page_2d = 2, page_volume = 3, page_cube = 4 };

/// Where a source lies in its page: texels, and the slice of a volume.
struct ATLAS_REGION {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t slice = 0;
};

class ATLAS_TEXTURE {
public:
    ATLAS_TEXTURE(ATLAS_TEXTURE const&) = delete;
    ATLAS_TEXTURE& operator=(ATLAS_TEXTURE const&) = delete;
    virtual ~ATLAS_TEXTURE();

    /// Latin-1: a source's path as it was given, a page's base name with its number and extension.
    std::string const& file_name() const { return file_name_; }
    ATLAS_TYPE type() const { return type_; }
    D3D_FORMAT format() const { return format_; }
    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }

    virtual bool is_format_supported(D3D_FORMAT format) const = 0;
    /// Of the top level, all slices or faces together.
    virtual std::int64_t texel_count() const;

protected:
    ATLAS_TEXTURE(std::string file_name, ATLAS_TYPE type, D3D_FORMAT format, std::int32_t width, std::int32_t height);

    void set_extents(std::int32_t width, std::int32_t height);

private:
    std::string file_name_;
    ATLAS_TYPE type_;
    D3D_FORMAT format_;
    std::int32_t width_;
    std::int32_t height_;
};

/// A loaded source, and later the place that it got.
class ATLAS_SOURCE_TEXTURE : public ATLAS_TEXTURE {
public:
    ATLAS_SOURCE_TEXTURE(std::string file_name, PIXEL_BUFFER texels);

    bool is_format_supported(D3D_FORMAT format) const override;

    std::uint32_t levels() const { return levels_; }
    /// Nothing once a page has taken them over.
    std::optional<PIXEL_BUFFER> const& texels() const { return texels_; }
    void release_texels() { texels_.reset(); }

    /// The page that holds it; null until it is placed. Borrowed.
    ATLAS_PAGE const* page() const { return page_; }
    ATLAS_REGION const& region() const { return region_; }
    void set_place(ATLAS_PAGE const& page, ATLAS_REGION const& region);

private:
    std::optional<PIXEL_BUFFER> texels_;
    std::uint32_t levels_;
    ATLAS_PAGE const* page_ = nullptr;
    ATLAS_REGION region_;
};

/// A texture that sources are put into. Where they lie is decided as they come; texels are brought together only when
/// the page is finalized and its size is known, so that a build never holds pages at the size that they are limited to.
class ATLAS_PAGE : public ATLAS_TEXTURE {
public:
    std::int32_t page_index() const { return page_index_; }
    /// Slices of a volume page; 1 for others.
    virtual std::int32_t depth() const;

    /// Whether the page takes the source; it then knows its place. A page that has refused a size once refuses that
    /// size ever after. `texture` must outlive `finalize`.
    virtual bool insert(ATLAS_SOURCE_TEXTURE& texture) = 0;
    /// Shrinks the page to what it holds and takes the texels of its sources over. Throws std::bad_alloc.
    virtual void finalize() = 0;
    /// What stands behind the page's number in the name of its file.
    virtual char const* extension() const = 0;
    /// Writes the page's file. On failure a message says so, and nothing else changes.
    void save(std::filesystem::path const& path);

    std::optional<PIXEL_BUFFER> const& texels() const { return texels_; }

protected:
    ATLAS_PAGE(std::string file_name, ATLAS_TYPE type, D3D_FORMAT format, std::int32_t page_index, std::int32_t width,
               std::int32_t height);

    virtual bool write(std::filesystem::path const& path) = 0;
    void set_texels(PIXEL_BUFFER texels) { texels_ = std::move(texels); }

private:
    std::int32_t page_index_;
    std::optional<PIXEL_BUFFER> texels_;
};
