// The floor under every whole run: reads a mosaic and writes as many bytes as the block's three outputs, in
// bulk, and computes nothing.
//
// Usage: files_only MOSAIC OUT OUT_DC OUT_SG
#include <vector>

#include "bench/whole_file.h"

namespace {

void write_block_repeatedly(const char *path, const std::vector<char> &block, size_t size) {
    const int fd = open_output(path);
    for (size_t done = 0; done < size; done += block.size())
        write_bytes(fd, block.data(), size - done < block.size() ? size - done : block.size());
    close(fd);
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 5) {
        std::fprintf(stderr, "Usage: %s MOSAIC OUT OUT_DC OUT_SG\n", argv[0]);
        return 1;
    }
    std::vector<char> block(file_block);
    const int in = open_input(argv[1]);
    size_t size = 0;
    while (const size_t n = read_bytes(in, block.data(), block.size()))
        size += n;
    close(in);
    write_block_repeatedly(argv[2], block, 3 * size);
    write_block_repeatedly(argv[3], block, size);
    write_block_repeatedly(argv[4], block, size);
    return 0;
}
