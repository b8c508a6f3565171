// Repeatable random numbers, one behind another.
#pragma once

#include <cstdint>

namespace cfatool {

class Noise {
  public:
    explicit Noise(uint32_t seed) : state_(seed) {}

    /// low to high, both inclusive.
    int32_t in(int32_t low, int32_t high) {
        state_ = state_ * 6364136223846793005u + 1442695040888963407u;
        const uint64_t span = static_cast<uint64_t>(int64_t{high} - low + 1);
        return static_cast<int32_t>(low + static_cast<int64_t>((state_ >> 33) % span));
    }

  private:
    uint64_t state_;
};

/// Neighbouring seeds give unrelated streams, and so do the purposes of one seed.
inline Noise noise_of(uint32_t seed, uint32_t purpose) {
    uint32_t h = seed * 2654435761u ^ purpose * 2246822519u;
    h = (h ^ h >> 15) * 2246822519u;
    h = (h ^ h >> 13) * 3266489917u;
    return Noise(h ^ h >> 16);
}

} // namespace cfatool
