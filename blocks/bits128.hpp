// The 128 bits of a BC6H or BC7 block, read and written front to back, lowest bit of the lowest byte first.
#pragma once

#include <cstdint>

namespace blocks {

/// Takes fields out of a block of 16 bytes in storage order. No field is longer than 32 bits.
class BIT_READER {
public:
    explicit BIT_READER(std::uint8_t const* block) {
        for (int i = 0; i < 8; ++i) {
            low_ |= std::uint64_t{block[i]} << (8 * i);
            high_ |= std::uint64_t{block[8 + i]} << (8 * i);
        }
    }

    std::uint32_t take(std::uint32_t count) {
        if (count == 0)
            return 0;
        auto const value = static_cast<std::uint32_t>(low_ & ((std::uint64_t{1} << count) - 1));
        low_ = (low_ >> count) | (high_ << (64 - count));
        high_ >>= count;
        return value;
    }

private:
    std::uint64_t low_ = 0;
    std::uint64_t high_ = 0;
};

/// Puts fields into a block in storage order, 128 bits in all: each field moves those before it on towards their
/// places. No field is longer than 32 bits, and bits of `value` above `count` must be zero.
class BIT_WRITER {
public:
    void put(std::uint32_t value, std::uint32_t count) {
        if (count == 0)
            return;
        low_ = (low_ >> count) | (high_ << (64 - count));
        high_ = (high_ >> count) | (std::uint64_t{value} << (64 - count));
    }

    void store(std::uint8_t* block) const {
        for (int i = 0; i < 8; ++i) {
            block[i] = static_cast<std::uint8_t>(low_ >> (8 * i));
            block[8 + i] = static_cast<std::uint8_t>(high_ >> (8 * i));
        }
    }

private:
    std::uint64_t low_ = 0;
    std::uint64_t high_ = 0;
};

}  // namespace blocks
