// A block of its own: registers, the planes it keeps, runs on memory. What cfa_block.h hands out.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "block/layout.h"
#include "block/memory_rows.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "cmodel/common/large_buffer.h"

namespace cfa {

/// Both register blocks, by value.
struct BlockRegisters {
    CfaReg cfa;
    CmodelTopReg top;

    BlockRegisters(); // at reset

    /// A register of either block by its key. Throws CallError.
    int32_t get(const char *key) const;
    void set(const char *key, int64_t v);

    /// One line of an INI file as the tool takes it.
    void load_line(const char *section, const char *key, const char *text);

    /// Both sections as INI text.
    std::string ini_text() const;
};

/// Loads INI text from a stream over registers, which stay as they are when it throws CallError, as `strict`
/// text may. `name` is what messages call the stream.
void load_ini(BlockRegisters &registers, std::FILE *stream, const std::string &name, bool strict);

/// Keeps the planes whose names it was given.
class KeptPlanes : public PlaneTaker {
  public:
    struct Kept {
        const PlaneInfo *info;
        uint32_t width, height;
        LargeBuffer memory;

        int32_t *samples() const { return reinterpret_cast<int32_t *>(memory.get()); }
    };

    /// Names with commas between, "*" for all. Throws CallError.
    explicit KeptPlanes(std::string_view names);
    bool any() const { return !wanted_.empty(); }

    /// Makes room for the planes that a run with the registers in force makes of a picture of this size.
    /// Memory of the run before serves again where it fits.
    void make_room(uint32_t width, uint32_t height);
    void forget() { kept_.clear(); }
    const std::vector<Kept> &kept() const { return kept_; }

    bool wants(const PlaneInfo &plane) const override;
    void take(const PlaneInfo &plane, const FRAME *frame) override;
    void row(const PlaneInfo &plane, int y, const SplitRow<int16_t> *channels) override;
    void row(const PlaneInfo &plane, int y, const SplitRow<int32_t> *channels) override;

  private:
    template <class T> void keep_row(const PlaneInfo &plane, int y, const SplitRow<T> *channels);
    int32_t *room_of(const PlaneInfo &plane) const; // null: not kept

    std::vector<const PlaneInfo *> wanted_;
    std::vector<Kept> kept_; // in pipeline order
};

/// Runs the block on a mosaic with these registers, on 1 thread or 2. Planes go to `planes` where it wants
/// any. Returns why the model ran, null if the line engine or the bypass did. Throws CallError, Error,
/// std::bad_alloc.
const char *run_on_memory(const BlockRegisters &registers, KeptPlanes &planes, const Mosaic &mosaic,
                          const OutputLayouts &out, int threads);

} // namespace cfa
