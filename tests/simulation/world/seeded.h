// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace orvanta::simulation {

/// Random numbers that are the same everywhere: the engine's sequence is fixed by the language, its
/// distributions are not, so these are ours.
class Seeded {
public:
    explicit Seeded(std::uint64_t seed) : m_engine(seed) {}

    /// From 0 to `count` - 1. The bias of the remainder is far below what matters here.
    std::int64_t below(std::int64_t count) {
        return static_cast<std::int64_t>(m_engine() % static_cast<std::uint64_t>(count));
    }
    std::int64_t between(std::int64_t first, std::int64_t last) {
        return first + below(last - first + 1);
    }
    bool chance(int percent) { return below(100) < percent; }
    template <typename T>
    const T& pick(const std::vector<T>& values) {
        return values[static_cast<std::size_t>(below(static_cast<std::int64_t>(values.size())))];
    }

private:
    std::mt19937_64 m_engine;
};

/// A number that depends on all bits of both. For what must stay the same when a script loses
/// events elsewhere: it is drawn from the time and the occasion, not from a sequence.
inline std::uint64_t mixed(std::uint64_t one, std::uint64_t other) {
    std::uint64_t x = one + 0x9E3779B97F4A7C15ULL * (other + 1);
    x = (x ^ (x >> 30U)) * 0xBF58476D1CE4E5B9ULL;
    x = (x ^ (x >> 27U)) * 0x94D049BB133111EBULL;
    return x ^ (x >> 31U);
}

} // namespace orvanta::simulation
