#include "log/log.h"

#include <doctest/doctest.h>

#include <string>

#include <unistd.h>

#include "tests/support/support.h"

// The logger is one per process and its sinks stay: every test has a process of its own.

namespace {

struct Seen {
    const std::tm *time = nullptr;
    std::string messages;
};

void seeing_sink(LogEvent &event) {
    auto &seen = *static_cast<Seen *>(event.user_data);
    char text[100];
    std::vsnprintf(text, sizeof text, event.format, event.args);
    seen.time = event.time;
    seen.messages += text;
}

} // namespace

TEST_CASE("console form: time, padded level name, label, plain line number") {
    const Outcome outcome = run_child([] {
        log_set_quiet(0);
        log_log(LOG_INFO, "label", 7, "x = %d", 5);
        log_set_level(LOG_ERROR);
        log_log(LOG_WARN, "label", 8, "below the level");
        log_set_quiet(1);
        log_log(LOG_FATAL, "label", 9, "quiet");
    });
    CHECK(outcome.status == 0);
    CHECK(outcome.out == "");
    INFO(outcome.err);
    CHECK(matches(outcome.err, "[0-9][0-9]:[0-9][0-9]:[0-9][0-9] INFO  label:7: x = 5\n"));
}

TEST_CASE("file form: date, level name, padded label, three-digit line number; from the sink's level on") {
    const TempFolder folder;
    const std::string path = folder / "log";
    run_child([&] {
        log_set_quiet(1);
        log_add_fp(std::fopen(path.c_str(), "a"), LOG_DEBUG);
        for (int level = LOG_TRACE; level <= LOG_FATAL; level++)
            log_log(level, "cfa_reg", 7, "%s", "text");
        log_log(LOG_ERROR, "a_label_beyond_20_characters", 1234, "line feed kept\n");
        _exit(0); // each record was flushed
    });
    std::string want;
    for (const char *record :
         {"DEBUG cfa_reg             :007: text\n", "INFO  cfa_reg             :007: text\n",
          "WARN  cfa_reg             :007: text\n", "ERROR cfa_reg             :007: text\n",
          "FATAL cfa_reg             :007: text\n",
          "ERROR a_label_beyond_20_characters:1234: line feed kept\n\n"})
        want += std::string("[0-9]{4}-[0-9][0-9]-[0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9] ") + record;
    const std::string text = read_file(path);
    INFO(text);
    CHECK(matches(text, want));
    CHECK(std::string(log_level_string(LOG_TRACE)) == "TRACE");
}

TEST_CASE("32 sinks, each with the arguments from their start and one time; a 33rd is refused") {
    const Outcome outcome = run_child([] {
        log_set_quiet(1);
        take_log(); // has a sink of its own, so 31 are left
        Seen seen[32];
        for (int i = 0; i < 31; i++)
            if (log_add_callback(seeing_sink, &seen[i], i == 5 ? LOG_ERROR : LOG_TRACE) != 0)
                _exit(10);
        if (log_add_callback(seeing_sink, &seen[31], LOG_TRACE) != -1)
            _exit(11);
        log_log(LOG_INFO, "label", 1, "%d and %s", 42, "text");
        for (int i = 0; i < 32; i++) {
            if (seen[i].messages != (i == 5 || i == 31 ? "" : "42 and text"))
                _exit(12);
            if (i != 5 && i != 31 && seen[i].time != seen[0].time)
                _exit(13);
        }
    });
    CHECK(outcome.status == 0);
}

TEST_CASE("the lock is taken before and released after each record") {
    const Outcome outcome = run_child([] {
        log_set_quiet(1);
        static std::string trace;
        log_set_lock([](bool lock, void *data) { trace += lock ? *static_cast<char *>(data) : ')'; },
                     const_cast<char *>("("));
        log_add_callback([](LogEvent &) { trace += '*'; }, nullptr, LOG_WARN);
        log_log(LOG_WARN, "label", 1, "seen");
        log_log(LOG_INFO, "label", 2, "not seen");
        std::printf("%s", trace.c_str());
    });
    CHECK(outcome.out == "(*)()");
}
