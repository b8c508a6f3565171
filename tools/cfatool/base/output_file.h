// Output files that are whole or not there.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace cfatool {

/// A file that appears under its name only when commit() has succeeded: it is written beside and renamed.
/// What is there already and is no regular file (a device, a pipe, a link) is written directly. Every member
/// throws Trouble naming the file and the reason.
class OutputFile {
  public:
    explicit OutputFile(const std::string &path);
    ~OutputFile(); // without a commit nothing is left behind
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;

    void write(const void *data, size_t size);
    void write(const std::string &text) { write(text.data(), text.size()); }
    void commit();
    const std::string &path() const { return path_; }

  private:
    void open_beside(unsigned mode);

    std::string path_;
    std::string beside_; // name of the unfinished file; empty when written directly
    std::FILE *stream_ = nullptr;
};

/// An OutputFile of these bytes, committed.
void write_whole_file(const std::string &path, const std::string &bytes);

} // namespace cfatool
