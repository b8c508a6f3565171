// A peer: OpenCV's edge-aware demosaic of a 16-bit BGGR mosaic, one thread, as lean as it can be had: files
// in bulk, bytes swapped in place, none of the library's readers and writers loaded.
//
// Usage: opencv_bulk MOSAIC OUT
#include <cctype>
#include <cstdint>
#include <cstring>

#include <opencv2/imgproc.hpp>

#include "bench/whole_file.h"

namespace {

// Samples in files are big-endian.
void swap_bytes(cv::Mat &picture) {
    auto *const samples = picture.ptr<uint16_t>();
    const size_t count = picture.total() * static_cast<size_t>(picture.channels());
    for (size_t i = 0; i < count; ++i)
        samples[i] = static_cast<uint16_t>(samples[i] << 8 | samples[i] >> 8);
}

// The next number of a header, behind white space and comment lines; moves `at` behind it.
int next_number(const char *&at) {
    while (std::isspace(static_cast<unsigned char>(*at)) || *at == '#')
        at += *at == '#' ? std::strcspn(at, "\n") : 1;
    char *end = nullptr;
    const int number = static_cast<int>(std::strtol(at, &end, 10));
    at = end;
    return number;
}

cv::Mat read_mosaic(const char *path) {
    const int fd = open_input(path);
    char header[256];
    header[read_bytes(fd, header, sizeof header - 1)] = '\0';
    const char *at = header + 2;
    const int width = next_number(at);
    const int height = next_number(at);
    if (std::strncmp(header, "P5", 2) != 0 || width < 1 || height < 1 || next_number(at) < 256) {
        std::fprintf(stderr, "%s: not a 16-bit P5 picture\n", path);
        std::exit(1);
    }
    lseek(fd, at + 1 - header, SEEK_SET); // one white space behind the maximum
    cv::Mat mosaic(height, width, CV_16UC1);
    const size_t bytes = mosaic.total() * 2;
    if (read_bytes(fd, mosaic.ptr<char>(), bytes) != bytes) {
        std::fprintf(stderr, "%s: samples are missing\n", path);
        std::exit(1);
    }
    close(fd);
    swap_bytes(mosaic);
    return mosaic;
}

void write_rgb(const char *path, cv::Mat &rgb) {
    swap_bytes(rgb);
    char header[64];
    const int length = std::snprintf(header, sizeof header, "P6\n%d %d\n4095\n", rgb.cols, rgb.rows);
    const int fd = open_output(path);
    write_bytes(fd, header, static_cast<size_t>(length));
    write_bytes(fd, rgb.ptr<char>(), rgb.total() * 6);
    close(fd);
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        std::fprintf(stderr, "Usage: %s MOSAIC OUT\n", argv[0]);
        return 1;
    }
    cv::setNumThreads(1);
    const cv::Mat mosaic = read_mosaic(argv[1]);
    cv::Mat rgb;
    cv::cvtColor(mosaic, rgb,
                 cv::COLOR_BayerRG2RGB_EA); // named there by the second row's second and third site
    write_rgb(argv[2], rgb);
    return 0;
}
