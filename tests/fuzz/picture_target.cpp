// The picture reader on any bytes: whole frame, pieces, words of the file and a written copy hold the same
// samples.

#include <algorithm>
#include <vector>

#include "cmodel/cfa/src/lines/file_rows.h"
#include "cmodel/cfa/src/lines/frame_rows.h"
#include "cmodel/common/ppm.h"
#include "cmodel/common/ppm_stream.h"
#include "tests/fuzz/fuzz_support.h"

using namespace cfa;

namespace {

struct Picture {
    PpmHeader header{};
    bool tried = false; // small enough
    std::vector<uint32_t> samples;
};

bool small_enough(const PpmHeader &header) {
    return int64_t{header.width} * header.height <= FUZZ_PIXELS;
}

Picture read_frame(const char *path) {
    Picture picture;
    {
        PpmReader peek(path);
        picture.header = peek.header();
        peek.close();
    }
    if (!small_enough(picture.header))
        return picture;
    const FramePtr frame(CM_ReadPPM5(path, FRAME_TYPE_IMG));
    picture.tried = true;
    picture.samples.assign(frame->data, frame->data + static_cast<size_t>(frame->width) * frame->height);
    return picture;
}

void expect_same(const char *what, const uint32_t *got, const Picture &want) {
    if (!std::equal(want.samples.begin(), want.samples.end(), got))
        fuzz_failure(std::string(what) + ": other samples");
}

// A row at a time.
void check_pieces(const char *path, const Picture &want) {
    PpmReader reader(path);
    std::vector<uint32_t> samples(want.samples.size());
    const size_t width = static_cast<size_t>(reader.header().width);
    for (size_t at = 0; at < samples.size(); at += width)
        reader.read(samples.data() + at, width);
    reader.close();
    expect_same("rows", samples.data(), want);
}

// As the file's words; a picture that the line engine takes has no sample beyond its bound.
void check_words(const char *path, const Picture &want) {
    if (want.header.bit_depth < 1 || want.header.bit_depth > 16)
        return;
    PpmReader reader(path);
    WordStore store(reader.header());
    const bool taken = store.read(reader);
    const bool small = cfa_lines_take_samples(want.samples.data(), want.samples.size());
    if (taken && !small)
        fuzz_failure("words: a large sample is taken");
    const FramePtr frame = store.frame(reader);
    reader.close();
    expect_same("words", frame->data, want);
}

// Written again and read back: the low bytes of every sample. A depth of 0 or 1 is left out: the maximum
// value that is written for it, 0 or 1, reads as none or as a depth of 0.
void check_copy(const char *path, const Picture &want) {
    if (want.header.bit_depth < 2)
        return;
    const FramePtr frame(CM_ReadPPM5(path, FRAME_TYPE_IMG));
    const std::string copy = memory_file(1, "", 0);
    CM_WritePPM5(copy.c_str(), frame.get());
    const FramePtr again(CM_ReadPPM5(copy.c_str(), FRAME_TYPE_IMG));
    const int bytes = ppm_sample_bytes(frame->bit_depth);
    const uint32_t mask = bytes == 4 ? ~0u : (1u << 8 * bytes) - 1;
    if (again->width != frame->width || again->height != frame->height ||
        again->bit_depth != frame->bit_depth)
        fuzz_failure("copy: another header");
    for (size_t i = 0; i < want.samples.size(); i++)
        if (again->data[i] != (want.samples[i] & mask))
            fuzz_failure("copy: other samples");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    const std::string path = memory_file(0, bytes, size);
    Picture picture;
    const int status = run_refusable([&] { picture = read_frame(path.c_str()); });
    if (status != 0 || !picture.tried)
        return 0;
    const int again = run_refusable([&] {
        check_pieces(path.c_str(), picture);
        check_words(path.c_str(), picture);
        check_copy(path.c_str(), picture);
    });
    if (again != 0)
        fuzz_failure("refused the second time");
    return 0;
}
