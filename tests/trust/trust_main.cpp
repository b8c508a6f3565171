// The tests of what a user relies on when things go wrong. --rounds=N runs the random ones N times instead of
// a few.
#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

#include <cstdlib>
#include <string_view>

#include "log/log.h"
#include "tests/trust/job.h"

int main(int argc, char **argv) {
    constexpr std::string_view option = "--rounds=";
    for (int i = 1; i < argc; i++)
        if (std::string_view(argv[i]).starts_with(option))
            set_rounds(std::atoi(argv[i] + option.size()));
    log_set_quiet(1);
    return doctest::Context(argc, argv).run();
}
