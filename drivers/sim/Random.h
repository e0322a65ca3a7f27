// Counter-based random numbers: every value is a pure function of the seed and of the
// coordinates that name it (security, day, minute...). Nothing depends on the order in
// which values are asked for, which is what keeps the market identical across runs that
// make different requests.
#pragma once

#include <cmath>
#include <cstdint>
#include <string_view>

namespace qvnsim {

constexpr uint64_t Mix64(uint64_t x) {
    x += 0x9e3779b97f4a7c15ull;
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ull;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebull;
    return x ^ (x >> 31);
}

constexpr uint64_t Hash(uint64_t seed, uint64_t a, uint64_t b = 0, uint64_t c = 0, uint64_t d = 0) {
    uint64_t h = Mix64(seed ^ 0x5157a17e5eedull);
    h = Mix64(h ^ a);
    h = Mix64(h ^ (b * 0x9e3779b97f4a7c15ull));
    h = Mix64(h ^ (c * 0xc2b2ae3d27d4eb4full));
    return Mix64(h ^ (d * 0x165667b19e3779f9ull));
}

// FNV-1a, so that a security's stream is named by its symbol and not by its position.
constexpr uint64_t HashText(std::string_view text) {
    uint64_t h = 0xcbf29ce484222325ull;
    for (const char c : text) h = (h ^ static_cast<unsigned char>(c)) * 0x100000001b3ull;
    return h;
}

// In [0, 1).
inline double Uniform(uint64_t h) {
    return static_cast<double>(h >> 11) * 0x1.0p-53;
}

// Standard normal, by Box-Muller over two uniforms drawn from the one hash.
inline double Normal(uint64_t h) {
    const double u1 = 1.0 - Uniform(h);  // (0, 1]
    const double u2 = Uniform(Mix64(h));
    return std::sqrt(-2.0 * std::log(u1)) * std::cos(6.283185307179586 * u2);
}

}  // namespace qvnsim
