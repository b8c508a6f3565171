// cfa_cmodel: one raw mosaic in; the RGB picture, the DC image and the sharpen-gain map out.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/picture_run.h"
#include "cmodel/common/error.h"
#include "log/log.h"

using namespace cfa;

/// Prints the usage text and the arguments given, waits for one key, ends with status -1.
[[noreturn]] void cfa_usage(int argc, char **argv) {
    std::printf("Usage: %s ini_file log_file log_level dump_dbg_img dbg_path cmodel_top_hw_ini\n",
                argc > 0 ? argv[0] : "cfa_cmodel");
    std::puts("src_raw out out_dc out_sg\n"
              "[ 1] ini_file            : INI\n"
              "[ 2] log_file            : Log file\n"
              "[ 3] log_level           : Log level\n"
              "[ 4] dump dbg img enable : Dump debug image\n"
              "[ 5] debug_path          : Debug output path\n"
              "[ 6] cmodel_top_ini      : Cmodel Top INI\n"
              "[ 7] src_RAW             : Input 12-bit RAW image (ppm)\n"
              "[ 8] out_RGB             : Output 12-bit RGB image\n"
              "[ 9] out_RGB_DC          : Output DC RGB output\n"
              "[10] out_SharpGain       : Output sharpen gain output\n"
              "////////////////////////////////");
    for (int i = 0; i < argc; ++i)
        std::printf("argv[%d]: %s\n", i, argv[i]);
    std::puts("/////////////////////////////////"); // Kept: one more than above
    std::printf("Press any key to exit...");
    std::fflush(stdout);
    std::getchar();
    std::exit(-1);
}

namespace {

// The order of the ten arguments, behind the name of the executable.
enum Argument {
    INI_FILE = 1,
    LOG_FILE,
    LOG_LEVEL,
    DUMP_DBG_IMG,
    DBG_PATH,
    CMODEL_TOP_INI,
    SRC_RAW,
    OUT,
    OUT_DC,
    OUT_SG,
    ARGUMENT_COUNT
};

int integer(const char *text) {
    return static_cast<int>(std::strtol(text, nullptr, 10));
}

// A descriptor that the caller closed would be given to the next file opened, and
// that file receive our messages.
void open_standard_descriptors() {
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd)
        if (fcntl(fd, F_GETFD) == -1 && errno == EBADF && open("/dev/null", O_RDWR) != fd)
            std::exit(1);
}

// Without the least memory not even an exception can be made.
[[noreturn]] void end_without_memory() {
    end_process(std::bad_alloc());
}

// A size limit on files and a reader that goes away are write errors, not signals.
void prepare_process() {
    open_standard_descriptors();
    std::set_terminate(end_without_memory);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

std::FILE *open_log(const char *path, int level) {
    std::FILE *const log_file = std::fopen(path, "a");
    if (log_file == nullptr) {
        if (errno == ENOMEM)
            allocation_error();
        throw Error(Error::Kind::file, std::string("Unable to open log file '") + path + "'");
    }
    log_add_fp(log_file, level);
    log_set_quiet(1);
    return log_file;
}

// Returns once all outputs are written.
void run(char **argv) {
    dump_dbg_img = integer(argv[DUMP_DBG_IMG]) != 0;
    std::snprintf(dbg_path, sizeof dbg_path, "%s", argv[DBG_PATH]);
    std::FILE *const log_file = open_log(argv[LOG_FILE], integer(argv[LOG_LEVEL]));
    load_registers(argv[INI_FILE], argv[CMODEL_TOP_INI]);
    run_picture(argv[SRC_RAW], {argv[OUT], argv[OUT_DC], argv[OUT_SG]},
                [](const char *line) { std::fprintf(stderr, "%s\n", line); });
    std::fclose(log_file);
}

} // namespace

int main(int argc, char **argv) {
    prepare_process();
    if (argc != ARGUMENT_COUNT)
        cfa_usage(argc, argv);
    try {
        run(argv);
        return 0;
    } catch (const std::exception &error) {
        print_error(error);
        return ERROR_STATUS;
    }
}
