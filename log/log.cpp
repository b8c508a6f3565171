#include "log/log.h"

#include <array>

namespace {

constexpr int MAX_SINKS = 32;

struct Sink {
    LogSink function; // empty from the first free slot on
    void *user_data;
    int level;
};

struct Logger {
    LogLock lock;
    void *lock_data;
    int level;
    int quiet;
    std::array<Sink, MAX_SINKS> sinks;
};

Logger logger; // zero: console on, level TRACE, no sinks

constexpr std::array<const char *, 6> LEVEL_NAMES = {"TRACE", "DEBUG", "INFO", "WARN", "ERROR", "FATAL"};

// Message, line feed, flush: the end of every record. Write errors are ignored.
void write_message(std::FILE *stream, LogEvent &event) {
    std::vfprintf(stream, event.format, event.args);
    std::fputc('\n', stream);
    std::fflush(stream);
}

void console_sink(LogEvent &event) {
    auto *const stream = static_cast<std::FILE *>(event.user_data);
    char time[16] = "";
    std::strftime(time, sizeof time, "%H:%M:%S", event.time);
    std::fprintf(stream, "%s %-5s %s:%d: ", time, log_level_string(event.level), event.file, event.line);
    write_message(stream, event);
}

void file_sink(LogEvent &event) {
    auto *const stream = static_cast<std::FILE *>(event.user_data);
    char time[64] = "";
    std::strftime(time, sizeof time, "%Y-%m-%d %H:%M:%S", event.time);
    std::fprintf(stream, "%s %-5s %-20s:%03d: ", time, log_level_string(event.level), event.file, event.line);
    write_message(stream, event);
}

// Hands the event to one sink. The time is taken by the first sink of a record and shared by all.
void emit(LogEvent &event, LogSink sink, void *user_data) {
    if (event.time == nullptr) {
        static const std::tm NO_TIME = {};
        const std::time_t now = std::time(nullptr);
        const std::tm *const local = std::localtime(&now);
        event.time = local != nullptr ? local : &NO_TIME;
    }
    event.user_data = user_data;
    sink(event);
}

} // namespace

const char *log_level_string(int level) {
    return LEVEL_NAMES[static_cast<size_t>(level)];
}

void log_set_level(int level) {
    logger.level = level;
}

void log_set_quiet(int enable) {
    logger.quiet = enable;
}

void log_set_lock(LogLock function, void *user_data) {
    logger.lock = function;
    logger.lock_data = user_data;
}

int log_add_callback(LogSink function, void *user_data, int level) {
    for (Sink &slot : logger.sinks) {
        if (slot.function == nullptr) {
            slot = {function, user_data, level};
            return 0;
        }
    }
    return -1;
}

int log_add_fp(std::FILE *file, int level) {
    return log_add_callback(file_sink, file, level);
}

void log_log(int level, const char *file, int line, const char *format, ...) {
    LogEvent event = {};
    event.format = format;
    event.file = file;
    event.line = line;
    event.level = level;

    if (logger.lock != nullptr)
        logger.lock(true, logger.lock_data);

    // Every sink gets the arguments from their start.
    if (logger.quiet != 1 && level >= logger.level) {
        va_start(event.args, format);
        emit(event, console_sink, stderr);
        va_end(event.args);
    }
    for (const Sink &sink : logger.sinks) {
        if (sink.function == nullptr)
            break;
        if (level >= sink.level) {
            va_start(event.args, format);
            emit(event, sink.function, sink.user_data);
            va_end(event.args);
        }
    }

    if (logger.lock != nullptr)
        logger.lock(false, logger.lock_data);
}
