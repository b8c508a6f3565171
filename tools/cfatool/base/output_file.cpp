// Writes beside, then renames.
#include "tools/cfatool/base/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

constexpr unsigned MODE_OF_A_NEW_FILE = 0666; // the umask takes its part

} // namespace

OutputFile::OutputFile(const std::string &path) : path_(path) {
    struct stat old = {};
    const bool exists = lstat(path.c_str(), &old) == 0;
    if (exists && access(path.c_str(), W_OK) != 0)
        throw errno_trouble(path);
    if (!exists || S_ISREG(old.st_mode))
        open_beside(exists ? old.st_mode & 0777 : MODE_OF_A_NEW_FILE);
    if (stream_ == nullptr && exists) // no regular file, or a folder in which nothing new may be made
        stream_ = std::fopen(path.c_str(), "wb");
    if (stream_ == nullptr)
        throw errno_trouble(path);
}

OutputFile::~OutputFile() {
    if (stream_ != nullptr)
        std::fclose(stream_);
    if (!beside_.empty())
        unlink(beside_.c_str());
}

void OutputFile::open_beside(unsigned mode) {
    const size_t slash = path_.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : path_.substr(0, slash + 1);
    std::string name;
    int descriptor = -1;
    for (int n = 0; n < 100 && (n == 0 || (descriptor < 0 && errno == EEXIST)); ++n) {
        name = folder + ".cfatool." + std::to_string(getpid()) + "." + std::to_string(n) + ".tmp";
        descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    }
    if (descriptor < 0)
        return;
    beside_ = name;
    stream_ = fdopen(descriptor, "wb");
}

void OutputFile::write(const void *data, size_t size) {
    if (std::fwrite(data, 1, size, stream_) != size)
        throw errno_trouble(path_);
}

void OutputFile::commit() {
    const bool flushed = std::fflush(stream_) == 0;
    const int reason = errno;
    const bool closed = std::fclose(stream_) == 0;
    stream_ = nullptr;
    if (!flushed)
        errno = reason;
    if (!flushed || !closed || (!beside_.empty() && std::rename(beside_.c_str(), path_.c_str()) != 0))
        throw errno_trouble(path_);
    beside_.clear();
}

void write_whole_file(const std::string &path, const std::string &bytes) {
    OutputFile file(path);
    file.write(bytes);
    file.commit();
}

} // namespace cfatool
