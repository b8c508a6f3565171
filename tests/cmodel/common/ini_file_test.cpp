#include "cmodel/common/ini_file.h"

#include <doctest/doctest.h>

#include <string>

#include <sys/mman.h>

#include "tests/support/hooks.h"
#include "tests/support/support.h"

// What values do to registers: cfa_reg_test. Random texts against another reader:
// tools/cfatool/registers_test.

TEST_CASE("lines of every length around the parser's own limit, and of megabytes in little memory") {
    // Through a file in memory: many small files take their time on a disk.
    const std::string path = "/proc/self/fd/" + std::to_string(memfd_create("ini", 0));
    for (size_t length = 150; length < 451; ++length) {
        const bool endless = length == 450;
        const std::string blanks(endless ? 2000000 : length, ' '), zeros(blanks.size(), '0'),
            name(blanks.size(), 's');
        write_file(path, "[cfa]\nreg_cfa_enable" + blanks + "=" + blanks + "-" + zeros + "12" + blanks +
                             "; c\n" + blanks + zeros + "34\n# " + zeros + "k = 1\n[" + name +
                             "] ; c\nk = 1\n");
        std::string said;
        const auto keep = [](void *to, const char *section, const char *key, const char *value) {
            *static_cast<std::string *>(to) +=
                std::string(section) + " " + key + " " + std::to_string(std::atoll(value)) + "\n";
            return 1;
        };
        watch();
        CHECK(cfa::ini_load_file(path.c_str(), keep, &said) == 0);
        INFO(length);
        CHECK(watched->bytes < 100000);
        CHECK(said == "cfa reg_cfa_enable -12\ncfa reg_cfa_enable 34\n" + std::string(49, 's') + " k 1\n");
    }
}
