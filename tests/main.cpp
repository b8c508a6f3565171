#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

#include "log/log.h"

int main(int argc, char **argv) {
    log_set_quiet(1);
    return doctest::Context(argc, argv).run();
}
