#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <regex.h>
#include <sys/types.h>

#include "cmodel/common/error.h"
#include "cmodel/common/register_block.h"
#include "log/log.h"

namespace cfa {

namespace {

// One line of any length, line feed included; empty at the end of the file.
class LineReader {
  public:
    explicit LineReader(std::FILE *stream) : stream_(stream) {}
    ~LineReader() { std::free(buffer_); }
    LineReader(const LineReader &) = delete;
    LineReader &operator=(const LineReader &) = delete;

    bool next() {
        length_ = getline(&buffer_, &capacity_, stream_);
        if (length_ < 0 && std::ferror(stream_) == 0 && std::feof(stream_) == 0)
            allocation_error();
        return length_ >= 0;
    }
    const char *text() const { return buffer_; }
    std::string_view view() const { return {buffer_, static_cast<size_t>(length_)}; }

  private:
    std::FILE *stream_;
    char *buffer_ = nullptr;
    size_t capacity_ = 0;
    ssize_t length_ = 0;
};

void write_line(std::FILE *stream, std::string_view line) {
    std::fwrite(line.data(), 1, line.size(), stream);
}

// Whether a line is a section header. Kept: a run of "[", letters, digits and "_" before "]" is enough.
class HeaderPattern {
  public:
    HeaderPattern() {
        const bool success = regcomp(&regex_, "^[[a-z0-9_]+]", REG_EXTENDED | REG_ICASE) == 0;
        if (!success) {
            std::fputs("Assertion `success==0' failed.\n", stderr); // in every build, unlike assert
            std::abort();
        }
    }
    ~HeaderPattern() { regfree(&regex_); }
    HeaderPattern(const HeaderPattern &) = delete;
    HeaderPattern &operator=(const HeaderPattern &) = delete;

    /// 0 for a header, REG_NOMATCH, or an error of the matcher, which is logged.
    int match(const char *line, const char *label) const {
        const int result = regexec(&regex_, line, 0, nullptr, 0);
        if (result != 0 && result != REG_NOMATCH) {
            char message[100];
            regerror(result, &regex_, message, sizeof message);
            log_log(LOG_DEBUG, label, __LINE__, "error: %s\n", message);
        }
        return result;
    }

  private:
    regex_t regex_;
};

// Copies an INI file with the part's section, if it has one, replaced. Returns whether it had.
bool copy_replacing(std::FILE *in, std::FILE *out, const HeaderPattern &pattern, const RegisterPart &part,
                    const RegisterTable &table, const char *label) {
    const std::string own_header = std::string("[") + part.name + "]";
    bool skipping = false;
    bool written = false;
    bool newline_pending = false;
    for (LineReader line(in); line.next();) {
        const int result = pattern.match(line.text(), label);
        if (result == REG_NOMATCH) {
            if (!skipping)
                write_line(out, line.view());
        } else if (result == 0) {
            if (newline_pending)
                std::fputc('\n', out);
            newline_pending = false;
            skipping = line.view() == own_header + "\n" || line.view() == own_header + "\r\n";
            if (skipping) {
                register_write_section(out, part, table);
                written = newline_pending = true;
            } else {
                write_line(out, line.view());
            }
        }
    }
    return written;
}

using File = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

File open_file(const std::string &path, const char *mode) {
    File file(std::fopen(path.c_str(), mode), std::fclose);
    if (!file && errno == ENOMEM) // not a missing file: it would be overwritten
        allocation_error();
    return file;
}

// Whether the file holds as many bytes; leaves it at its start.
bool holds(std::FILE *file, long size) {
    const bool result = std::fseek(file, 0, SEEK_END) == 0 && std::ftell(file) == size;
    std::rewind(file);
    return result;
}

// Replaces the part's section in the existing file, through the temporary file. False when that cannot be
// opened, written and read back: what may lie in its place never goes over the user's file.
bool merge(const std::string &path, File in, const HeaderPattern &pattern, const RegisterPart &part,
           const RegisterTable &table, const char *label) {
    const std::string temp_path = path + ".temp";
    bool written = false;
    long size = -1; // of what was written
    if (const File temp = open_file(temp_path, "w+")) {
        written = copy_replacing(in.get(), temp.get(), pattern, part, table, label);
        size = std::ftell(temp.get());
    }
    in.reset();

    const File temp = open_file(temp_path, "r");
    if (!temp || !holds(temp.get(), size)) {
        if (!temp) // Kept: where there is no temporary file at all, the INI file is left empty
            open_file(path, "w+");
        log_log(LOG_DEBUG, label, __LINE__, "error: no temp.ini file!");
        return false;
    }
    if (const File out = open_file(path, "w+")) {
        for (LineReader line(temp.get()); line.next();)
            write_line(out.get(), line.view());
        if (!written)
            register_write_section(out.get(), part, table);
    }
    std::remove(temp_path.c_str());
    return true;
}

} // namespace

int register_dump_part(const char *path, const RegisterPart &part, const RegisterTable &table,
                       const char *label, const char *function) {
    const HeaderPattern pattern;
    log_log(LOG_DEBUG, label, __LINE__, "[%s] Dump INI configurations in %s...", function, path);
    if (File in = open_file(path, "r")) {
        if (!merge(path, std::move(in), pattern, part, table, label))
            return 0;
    } else if (const File out = open_file(path, "w+")) {
        register_write_section(out.get(), part, table);
    }
    log_log(LOG_DEBUG, label, __LINE__, "[%s] Dump INI configurations in %s done", function, path);
    return 0;
}

} // namespace cfa
