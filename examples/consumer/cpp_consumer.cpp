// The C++ interface of an installed tvkgen: a real round trip through the
// Pack layout and a DCT-IV plan that owns its memory.
#include <array>
#include <cmath>
#include <cstdio>
#include <vector>

#include "tvkgen.hpp"

int main()
{
    const std::array<double, 12> x{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    std::array<double, 12> spectrum{}, back{};
    tvkgen::rfft(tvkgen::pack, x, spectrum, tvkgen::scale::none);
    tvkgen::irfft(tvkgen::pack, spectrum, back, tvkgen::scale::inverse_by_n);
    double error = 0;
    for (size_t i = 0; i < x.size(); ++i)
        error = std::fmax(error, std::fabs(back[i] - x[i]));
    const tvkgen::dct4_plan<float> plan(64);
    std::vector<float> in(64, 1.0f), out(64);
    plan(in, out);
    std::printf("round trip through Pack: %.1e; DCT-IV of ones, first cell: %g\n", error, out[0]);
    return error < 1e-13 ? 0 : 1;
}
