#include "cmodel/cfa/src/lines/side_by_side.h"

#include <atomic>
#include <stdexcept>
#include <string>

#include <doctest/doctest.h>

using namespace cfa;

TEST_CASE(
    "two sides: every step in its order, the front ahead by its lead at most, the first error ends both") {
    for (const int steps : {0, 1, 7, 8, 9, 16, 17, 1000})
        for (const int failing : {-1, 0, 7, 8, 500}) {
            INFO(steps, " steps, failing ", failing);
            for (const bool front_fails : {false, true}) {
                std::atomic<int> front = 0, back = 0, wrong = 0;
                const auto step = [&](bool is_front, int t) {
                    std::atomic<int> &own = is_front ? front : back;
                    if (t == failing && is_front == front_fails)
                        throw std::runtime_error(is_front ? "front" : "back");
                    wrong += own != t || (is_front ? t - back > FRONT_LEAD : front <= t);
                    ++own;
                };
                std::string error;
                try {
                    run_side_by_side(
                        steps, [&](int t) { step(true, t); }, [&](int t) { step(false, t); });
                } catch (const std::runtime_error &thrown) {
                    error = thrown.what();
                }
                const bool fails = failing >= 0 && failing < steps;
                CHECK(wrong == 0);
                CHECK(error == (!fails ? "" : front_fails ? "front" : "back"));
                CHECK((fails ? (front_fails ? front : back) == failing : front == steps && back == steps));
            }
        }
}
