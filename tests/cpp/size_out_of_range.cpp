// Must not compile: a size the library has no kernel for, fixed at compile
// time, is refused by the C++ interface.
#include <array>
#include <complex>

#include "tvkgen.hpp"

int main()
{
    std::array<std::complex<double>, 65> x{}, y{};
    tvkgen::dft_forward(x, y, tvkgen::scale::none);
}
