#include "cmodel/cfa/src/lines/file_rows.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/lines/conditions.h"
#include "cmodel/cfa/src/lines/kernels/file_words.h"
#include "cmodel/cfa/src/lines/row_writer.h"
#include "cmodel/cfa/src/lines/rows.h"
#include "cmodel/cfa/src/lines/side_by_side.h"

namespace cfa {

namespace {

// What is read or written at a time: large enough to be cheap, small enough to stay in the cache.
constexpr size_t BLOCK_BYTES = 256 * 1024;

constexpr uint16_t GAIN_OF_ONE = 1024;

template <class Word, class Sample> class WordSource : public RowSource<Sample> {
  public:
    explicit WordSource(WordStore &store) : store_(store) {}
    void read(int y, Sample *even, Sample *odd) override {
        split_words(store_.row<Word>(y), store_.header().width, even, odd);
    }

  private:
    WordStore &store_;
};

void open_output(std::optional<PpmWriter> &writer, const char *path, char kind, const PpmHeader &header) {
    writer.emplace(path, kind, static_cast<uint32_t>(header.width), static_cast<uint32_t>(header.height),
                   header.bit_depth);
}

// RGB rows are written as they come; the other two outputs wait until it is complete.
template <class Word, class Sample> class WordSink : public RowSink<Sample> {
    using Row = SplitRow<Sample>;

  public:
    // gain may be null: not kept
    WordSink(WordStore &store, const char *path, Word *gain) : store_(store), path_(path), gain_(gain) {}

    void rgb(int y, Row red, Row green, Row blue) override {
        const PpmHeader &header = store_.header();
        if (y == 0) // no sooner: the engine's messages come before those of the output
            writer_.emplace(path_, '6', header.width, header.height, header.bit_depth, BLOCK_BYTES);
        join_words(red, green, blue, header.width, reinterpret_cast<Word *>(writer_->room()));
        writer_->done();
    }

    // In the place of the mosaic's row, which the engine has read: the DC image of a row depends on it.
    void dc(int y, Row row) override { join_words(row, store_.header().width, store_.row<Word>(y)); }

    void gain(int y, Row row) override {
        const int width = store_.header().width;
        if (gain_ != nullptr)
            join_words(row, width, gain_ + static_cast<size_t>(y) * width);
    }

  private:
    WordStore &store_;
    const char *const path_;
    Word *const gain_;
    std::optional<RowWriter> writer_;
};

void write_all(const char *path, const PpmHeader &header, const void *bytes, size_t size) {
    std::optional<PpmWriter> writer;
    open_output(writer, path, '5', header);
    writer->write_bytes(bytes, size);
    writer->close();
}

template <class Word> void write_gain_of_one(const char *path, const WordStore &store) {
    const size_t block_bytes = std::min(store.size(), BLOCK_BYTES);
    const std::vector<Word> block(block_bytes / sizeof(Word), file_order(static_cast<Word>(GAIN_OF_ONE)));
    std::optional<PpmWriter> writer;
    open_output(writer, path, '5', store.header());
    for (size_t left = store.size(); left > 0;) {
        const size_t size = std::min(left, block_bytes);
        writer->write_bytes(block.data(), size);
        left -= size;
    }
    writer->close();
}

// Below a megapixel a second thread wins less than a millisecond.
int threads_for(const WordStore &store) {
    return store.size() / store.word_bytes() > 1000000 && free_processors() > 1 ? 2 : 1;
}

template <class Word, class Sample> void run_words(WordStore &store, const OutputPaths &out) {
    const bool sharpens = registers().reg_cfa_shpn_enable == 1; // otherwise the gain is 1.0 everywhere
    const LargeBuffer gain = sharpens ? make_large_buffer(store.size()) : nullptr;
    WordSource<Word, Sample> source(store);
    WordSink<Word, Sample> sink(store, out.rgb, reinterpret_cast<Word *>(gain.get()));
    run_line_engine(store.header().width, store.header().height, source, sink, threads_for(store));
    write_all(out.dc, store.header(), store.row<Word>(0), store.size());
    if (sharpens)
        write_all(out.gain, store.header(), gain.get(), store.size());
    else
        write_gain_of_one<Word>(out.gain, store);
}

} // namespace

WordStore::WordStore(const PpmHeader &header)
    : header_(header), word_bytes_(static_cast<size_t>(ppm_sample_bytes(header.bit_depth))),
      pixels_(static_cast<size_t>(header.width) * static_cast<size_t>(header.height)),
      bytes_(make_large_buffer(size())) {}

bool WordStore::read(PpmReader &reader) {
    while (present_ < size()) {
        const size_t wanted = std::min(size() - present_, BLOCK_BYTES);
        uint8_t *const block = bytes_.get() + present_;
        const size_t got = reader.read_bytes(block, wanted);
        present_ += got;
        if (got < wanted)
            return false;
        if (word_bytes_ == 2)
            all_ |= union_of_words(reinterpret_cast<const uint16_t *>(block), got / 2);
    }
    return cfa_lines_take_samples(all_);
}

FramePtr WordStore::frame(PpmReader &reader) const {
    FramePtr raw(new_frame(FRAME_TYPE_IMG, FRAME_FMT_MONO, static_cast<uint32_t>(header_.width),
                           static_cast<uint32_t>(header_.height), 1, header_.bit_depth));
    reader.convert(bytes_.get(), present_, raw->data, pixels_);
    return raw;
}

void run_file_rows(WordStore &store, const OutputPaths &out) {
    const bool wide = cfa_lines_need_wide_rows(store.union_of_bits());
    if (store.word_bytes() == 1)
        wide ? run_words<uint8_t, int32_t>(store, out) : run_words<uint8_t, int16_t>(store, out);
    else
        wide ? run_words<uint16_t, int32_t>(store, out) : run_words<uint16_t, int16_t>(store, out);
}

} // namespace cfa
