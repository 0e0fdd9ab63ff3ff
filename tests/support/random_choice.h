// Random choices that are the same for the same seed on every machine, and how many of them a test makes.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <random>

namespace tests
{

class RandomChoice
{
  public:
    explicit RandomChoice(uint32_t seed) : engine_(seed) {}

    uint32_t below(uint32_t limit)
    {
        return static_cast<uint32_t>(engine_() % limit);
    }
    uint32_t from_to(uint32_t first, uint32_t last)
    {
        return first + below(last - first + 1);
    }
    bool one_in(uint32_t count)
    {
        return below(count) == 0;
    }

  private:
    std::mt19937 engine_;
};

inline uint32_t random_steps()
{
    return std::getenv("TARVO_LONG") != nullptr ? 100000 : 3000;
}

constexpr uint32_t steps_of_a_tape = 300;

}
