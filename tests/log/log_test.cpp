#include "log/log.h"

#include <doctest/doctest.h>

#include <unistd.h>

#include "tests/support/hooks.h"
#include "tests/support/support.h"

// The logger is one per process and its sinks stay: every test has a process of its own.

TEST_CASE(
    "the forms of a record on the console and in a file, from the sink's level on, each record flushed") {
    const TempFolder folder;
    const std::string path = folder / "log";
    const Outcome outcome = run_child([&] {
        log_set_quiet(0);
        log_log(LOG_INFO, "label", 7, "x = %d", 5);
        log_set_level(LOG_ERROR);
        log_log(LOG_WARN, "label", 8, "below the level");
        log_set_quiet(1);
        log_add_fp(std::fopen(path.c_str(), "a"), LOG_DEBUG);
        for (int level = LOG_TRACE; level <= LOG_FATAL; ++level)
            log_log(level, "cfa_reg", 7, "%s", "text");
        log_log(LOG_ERROR, "a_label_beyond_20_characters", 1234, "line feed kept\n");
        _exit(*log_level_string(LOG_TRACE) == 'T' ? 0 : 10); // nothing is flushed here
    });
    CHECK(outcome.status == 0);
    CHECK(matches(outcome.err, "[0-9][0-9]:[0-9][0-9]:[0-9][0-9] INFO  label:7: x = 5\n"));
    std::string want;
    for (const char *record :
         {"DEBUG cfa_reg             :007: text\n", "INFO  cfa_reg             :007: text\n",
          "WARN  cfa_reg             :007: text\n", "ERROR cfa_reg             :007: text\n",
          "FATAL cfa_reg             :007: text\n",
          "ERROR a_label_beyond_20_characters:1234: line feed kept\n\n"})
        want += std::string("[0-9]{4}-[0-9][0-9]-[0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9] ") + record;
    CHECK(matches(read_file(path), want));
}

TEST_CASE("32 sinks, each with the arguments from their start and one time, between lock and unlock; a 33rd "
          "is refused") {
    const Outcome outcome = run_child([] {
        fake_time = [] {
            static std::time_t now = 1000;
            return ++now;
        }; // another second at every look
        log_set_lock([](bool lock, void *data) { std::putchar(lock ? *static_cast<char *>(data) : ')'); },
                     const_cast<char *>("("));
        const auto sink = [](LogEvent &event) {
            std::vprintf(event.format, event.args);
            std::printf("%02d%s", event.time->tm_sec, static_cast<const char *>(event.user_data));
        };
        take_log(); // has a sink of its own, so 31 are left
        for (int i = 1; i < 33; ++i)
            std::putchar(log_add_callback(sink, const_cast<char *>(i == 31 ? ";" : ","),
                                          i % 16 != 15 ? LOG_ERROR : LOG_INFO) == 0
                             ? '0'
                             : '-');
        log_log(LOG_INFO, "label", 1, "%d %s ", 42, "text");
        log_log(LOG_DEBUG, "label", 2, "not seen");
        log_log(LOG_WARN, "label", 3, "%%");
    });
    CHECK(outcome.out == std::string(31, '0') + "-(42 text 41,42 text 41;)()(%43,%43;)");
}
