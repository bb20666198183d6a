#pragma once

#include <algorithm>
#include <iterator>
#include <random>

/// Random choices that a seed repeats.
class Dice {
public:
    explicit Dice(unsigned seed) : m_random(seed) {}

    /// From 0 to `most`, both included.
    int upTo(int most) {
        return std::uniform_int_distribution<int>(0, std::max(most, 0))(m_random);
    }
    double between(double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(m_random);
    }
    /// One of a list that is not empty.
    template <class List>
    auto oneOf(const List& list) {
        return *std::next(std::begin(list), upTo(static_cast<int>(std::size(list)) - 1));
    }

private:
    std::mt19937 m_random;
};
