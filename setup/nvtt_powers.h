// The powers that NVIDIA Texture Tools takes on the way into linear light and back, for mip levels: a call of the math
// library for every channel of every texel, most of them for one of the 256 values that bytes come to. setup/nvtt puts
// this in their place. It calls the same function and keeps what came out, so the textures are the same to the byte.
#pragma once

#include <cmath>
#include <cstring>

/// Powers of one exponent; belongs to one thread.
class ZAB_POWERS {
public:
    explicit ZAB_POWERS(float exponent) : exponent_(exponent) {
        for (unsigned slot = 0; slot < slots; ++slot)
            bases_[slot] = no_base(slot);
    }

    float operator()(float base) {
        unsigned bits = 0;
        std::memcpy(&bits, &base, sizeof bits);
        unsigned const slot = slot_of(bits);
        if (bases_[slot] != bits) {
            bases_[slot] = bits;
            powers_[slot] = std::pow(base, exponent_);
        }
        return powers_[slot];
    }

private:
    static unsigned const slots = 2048;

    // The low bits of the exponent and the high ones of the fraction: every k / 255 has a slot of its own.
    static unsigned slot_of(unsigned bits) { return bits >> 16 & (slots - 1); }
    /// Bits that belong elsewhere, so that nothing is found in a slot that holds nothing yet.
    static unsigned no_base(unsigned slot) { return slot == 0 ? ~0u : 0; }

    float exponent_;
    unsigned bases_[slots];
    float powers_[slots];
};
