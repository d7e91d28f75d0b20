// Must not compile: no transform of one point.
#include <array>

#include "tvkgen.hpp"

int main()
{
    std::array<float, 1> x{}, y{};
    tvkgen::hartley(x, y, tvkgen::scale::none);
}
