// The process-wide logger: records of time, level, source label and line, then a formatted message.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <ctime>

enum LogLevel : int { LOG_TRACE, LOG_DEBUG, LOG_INFO, LOG_WARN, LOG_ERROR, LOG_FATAL };

/// One record on its way to a sink.
struct LogEvent {
    const char *format;
    va_list args;     // a fresh copy for each sink
    const char *file; // label of the issuing source file
    int line;
    int level;
    const std::tm *time; // local time, the same for all sinks of one record
    void *user_data;     // of the sink: the open stream for a file sink
};

using LogSink = void (*)(LogEvent &event);
using LogLock = void (*)(bool lock, void *user_data);

/// Emits one record to the console (standard error, unless quiet) and to every sink whose level it reaches.
/// REQUIRES format matches the arguments, as for printf.
void log_log(int level, const char *file, int line, const char *format, ...)
    __attribute__((format(printf, 4, 5)));

/// Lowest level written to the console; initially 0.
void log_set_level(int level);

/// 1 switches the console off.
void log_set_quiet(int enable);

/// Called with true before and with false after each record. No lock is installed by default.
void log_set_lock(LogLock function, void *user_data);

/// Takes the first of 32 slots that is empty. Returns 0, or -1 when all are taken.
int log_add_callback(LogSink function, void *user_data, int level);

/// Adds a file sink; the stream stays the caller's. Returns as log_add_callback.
int log_add_fp(std::FILE *file, int level);

/// "TRACE", "DEBUG", "INFO", "WARN", "ERROR" or "FATAL". REQUIRES 0 <= level <= 5.
const char *log_level_string(int level);
