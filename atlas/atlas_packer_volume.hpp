// Gives out the slices of a volume page, one after the other.
#pragma once

#include <cstdint>
#include <optional>

class ATLAS_PACKER_VOLUME {
public:
    ATLAS_PACKER_VOLUME(std::int32_t width, std::int32_t height, std::int32_t depth)
        : width_(width),
          height_(height),
          depth_(depth) {}

    /// The next slice, for a texture of exactly the page's sides; nothing for others, and when all slices are taken.
    std::optional<std::int32_t> insert(std::int32_t width, std::int32_t height) {
        if (width != width_ || height != height_ || next_slice_ >= depth_)
            return std::nullopt;
        return next_slice_++;
    }

    std::int32_t used_slices() const { return next_slice_; }

private:
    std::int32_t width_;
    std::int32_t height_;
    std::int32_t depth_;
    std::int32_t next_slice_ = 0;
};
