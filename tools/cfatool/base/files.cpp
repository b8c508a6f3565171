// Files through the C library; what is written goes beside first, then is renamed.
#include "tools/cfatool/base/files.h"

#include <fcntl.h>
#include <filesystem>
#include <fmt/core.h>
#include <openssl/evp.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

constexpr unsigned MODE_OF_A_NEW_FILE = 0666;   // the umask takes its part
constexpr size_t LARGEST_TEXT_FILE = 64u << 20; // larger files are no register files

/// Hands a file on in pieces: `take(data, size)`.
template <class Take> void read_in_pieces(const std::string &path, Take take) {
    const Stream stream = open_to_read(path);
    char buffer[65536];
    size_t count = 0;
    while ((count = std::fread(buffer, 1, sizeof buffer, stream.get())) > 0)
        take(buffer, count);
    if (std::ferror(stream.get()))
        throw errno_trouble(path);
}

} // namespace

Stream open_to_read(const std::string &path) {
    Stream stream(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!stream)
        throw errno_trouble(path);
    return stream;
}

bool readable(const std::string &path) {
    std::FILE *const stream = std::fopen(path.c_str(), "rb");
    return stream != nullptr && std::fclose(stream) == 0;
}

bool is_folder(const std::string &path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string read_whole_file(const std::string &path) {
    std::string bytes;
    read_in_pieces(path, [&](const char *data, size_t size) {
        bytes.append(data, size);
        if (bytes.size() > LARGEST_TEXT_FILE)
            throw file_trouble(path, "more than 64 MiB");
    });
    return bytes;
}

std::string sha256_of_file(const std::string &path) {
    const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX *)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    uint8_t sum[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    bool good = EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) == 1;
    read_in_pieces(path, [&](const char *data, size_t count) {
        good = good && EVP_DigestUpdate(context.get(), data, count) == 1;
    });
    if (!good || EVP_DigestFinal_ex(context.get(), sum, &size) != 1)
        throw file_trouble(path, "its sum cannot be computed");
    std::string text;
    for (unsigned i = 0; i < size; ++i)
        text += fmt::format("{:02x}", sum[i]);
    return text;
}

void keep_apart(const std::string &input, const std::string &output) {
    std::error_code error;
    if (std::filesystem::is_regular_file(output, error) && std::filesystem::equivalent(input, output, error))
        throw file_trouble(output, "is what is read; write to another file");
}

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
    const std::string folder = path_.substr(0, path_.rfind('/') + 1); // npos + 1 is 0
    std::string name;
    int descriptor = -1;
    for (int n = 0; n < 100 && (n == 0 || (descriptor < 0 && errno == EEXIST)); ++n) {
        name = fmt::format("{}.cfatool.{}.{}.tmp", folder, getpid(), n);
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
    const bool closed = std::fclose(stream_) == 0; // what is still in the buffer is written here
    stream_ = nullptr;
    if (!closed || (!beside_.empty() && std::rename(beside_.c_str(), path_.c_str()) != 0))
        throw errno_trouble(path_);
    beside_.clear();
}

void write_whole_file(const std::string &path, const std::string &bytes) {
    OutputFile file(path);
    file.write(bytes);
    file.commit();
}

} // namespace cfatool
