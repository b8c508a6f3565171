// Files: read whole, written whole or not there, summed.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace cfatool {

/// A stream that is closed with the object.
using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

/// Opens a file for reading. Throws Trouble.
Stream open_to_read(const std::string &path);

/// Whether a file can be opened for reading.
bool readable(const std::string &path);

/// Whether the path is a folder.
bool is_folder(const std::string &path);

/// All bytes of a text file of at most 64 MiB. Throws Trouble.
std::string read_whole_file(const std::string &path);

/// The SHA-256 of a file of any size as 64 hexadecimal digits. Throws Trouble.
std::string sha256_of_file(const std::string &path);

/// Throws Trouble where the output is the regular file that is read: it would be lost.
void keep_apart(const std::string &input, const std::string &output);

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
