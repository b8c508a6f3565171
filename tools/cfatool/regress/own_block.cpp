// The block inside this program.
#include <array>
#include <vector>

#include "cmodel/cfa/src/cfa_hw.h"
#include "cmodel/cfa/src/cfa_model.h"
#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/lines/conditions.h"
#include "cmodel/cfa/src/lines/kernels/file_words.h"
#include "cmodel/common/ppm.h"
#include "tools/cfatool/regress/makers.h"
#include "tools/cfatool/runs/output_frames.h"

namespace cfatool {
namespace {

/// The rows of a file's words.
template <class Word, class Sample> class WordsSource : public cfa::RowSource<Sample> {
  public:
    explicit WordsSource(cfa::WordStore &store) : store_(store) {}
    void read(int y, Sample *even, Sample *odd) override {
        cfa::split_words(store_.row<Word>(y), store_.header().width, even, odd);
    }

  private:
    cfa::WordStore &store_;
};

/// Sums rows as words of files while they are in the cache.
template <class Word, class Sample> class SummingSink : public cfa::RowSink<Sample> {
    using Row = cfa::SplitRow<Sample>;

  public:
    explicit SummingSink(const cfa::PpmHeader &header)
        : width_(header.width), words_(3 * static_cast<size_t>(header.width)) {
        for (size_t i = 0; i < summers_.size(); ++i)
            summers_[i] = Summer::of_picture(i == 0 ? 3 : 1, width_, header.height, header.bit_depth);
    }
    void rgb(int, Row red, Row green, Row blue) override {
        cfa::join_words(red, green, blue, width_, words_.data());
        add(0, 3);
    }
    void dc(int, Row row) override { one(1, row); }
    void gain(int, Row row) override { one(2, row); }
    OutputSums sums() const { return {summers_[0].sum(), summers_[1].sum(), summers_[2].sum()}; }

  private:
    void one(size_t which, Row row) {
        cfa::join_words(row, width_, words_.data());
        add(which, 1);
    }
    void add(size_t which, size_t channels) {
        summers_[which].add(words_.data(), channels * static_cast<size_t>(width_) * sizeof(Word));
    }

    const int width_;
    std::vector<Word> words_;
    std::array<Summer, 3> summers_;
};

template <class Word, class Sample> OutputSums sums_of_words(cfa::WordStore &store) {
    WordsSource<Word, Sample> source(store);
    SummingSink<Word, Sample> sink(store.header());
    cfa::run_line_engine(store.header().width, store.header().height, source, sink);
    return sink.sums();
}

OutputSums sums_of_words(cfa::WordStore &store) {
    const bool wide = cfa::cfa_lines_need_wide_rows(store.union_of_bits());
    if (store.word_bytes() == 1)
        return wide ? sums_of_words<uint8_t, int32_t>(store) : sums_of_words<uint8_t, int16_t>(store);
    return wide ? sums_of_words<uint16_t, int32_t>(store) : sums_of_words<uint16_t, int16_t>(store);
}

Sum sum_of_frame(const FRAME *frame) {
    const int bytes = cfa::ppm_sample_bytes(frame->bit_depth);
    Summer summer = Summer::of_picture(static_cast<int>(frame->channels), cfa::width_of(frame),
                                       cfa::height_of(frame), frame->bit_depth);
    const size_t row = static_cast<size_t>(frame->width) * frame->channels;
    std::vector<uint8_t> packed(row * static_cast<size_t>(bytes));
    for (uint32_t y = 0; y < frame->height; ++y) {
        uint8_t *to = packed.data();
        for (const uint32_t *v = frame->data + y * row, *const end = v + row; v != end; ++v)
            for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
                *to++ = static_cast<uint8_t>(*v >> shift);
        summer.add(packed.data(), packed.size());
    }
    return summer.sum();
}

class OwnBlock : public OutputMaker {
  public:
    explicit OwnBlock(bool whole_planes)
        : whole_planes_(whole_planes), identity_(sum_of_file("/proc/self/exe")) {}

    Sum identity(const Case &) const override { return {identity_.high, identity_.low + whole_planes_}; }

    OutputSums make(const Inputs &inputs) override {
        const cfa::BoundRegisters bound(inputs.registers->block, inputs.registers->top, nullptr);
        cfa::WordStore *const words = inputs.mosaic->words();
        if (!whole_planes_ && words != nullptr && cfa::registers().reg_cfa_enable != 0 &&
            cfa::cfa_lines_excludes(static_cast<uint32_t>(words->header().width),
                                    static_cast<uint32_t>(words->header().height)) == nullptr)
            return sums_of_words(*words);
        const OutputFrames out = frames_of(inputs);
        return {sum_of_frame(out.rgb.get()), sum_of_frame(out.dc.get()), sum_of_frame(out.gain.get())};
    }

    bool make_files(const Inputs &inputs, const std::string &folder, bool debug) override {
        std::optional<cfa::BoundRegisters> bound;
        if (!debug) {
            bound.emplace(inputs.registers->block, inputs.registers->top, nullptr);
        } else { // the process's own run writes them
            cfa_reg = inputs.registers->block;
            cmodel_top_reg = inputs.registers->top;
            std::snprintf(dbg_path, sizeof dbg_path, "%s", folder.c_str());
        }
        dump_dbg_img = debug;
        const OutputFrames out = frames_of(inputs);
        dump_dbg_img = false;
        cfa::write_p6((folder + "/out.ppm").c_str(), out.rgb.get());
        cfa::write_p5((folder + "/out_dc.ppm").c_str(), out.dc.get());
        cfa::write_p5((folder + "/out_sg.ppm").c_str(), out.gain.get());
        return true;
    }

  private:
    // With the registers in force.
    OutputFrames frames_of(const Inputs &inputs) const {
        const FRAME *const raw = inputs.mosaic->frame();
        OutputFrames out(raw);
        if (!whole_planes_ || cfa::registers().reg_cfa_enable == 0) {
            cfa::run_block(raw, out.rgb.get(), out.dc.get(), out.gain.get());
        } else {
            cfa::refuse_small_picture(raw->width, raw->height);
            cfa::cfa_model(raw, out.rgb.get(), out.dc.get(), out.gain.get());
        }
        return out;
    }

    bool whole_planes_;
    Sum identity_;
};

} // namespace

std::unique_ptr<OutputMaker> make_own_block() {
    return std::make_unique<OwnBlock>(false);
}

std::unique_ptr<OutputMaker> make_whole_plane_model() {
    return std::make_unique<OwnBlock>(true);
}

} // namespace cfatool
