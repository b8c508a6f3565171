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
        std::unique_ptr<int32_t[]> samples;
    };

    /// Names with commas between, "*" for all. Throws CallError.
    explicit KeptPlanes(std::string_view names);
    bool any() const { return !wanted_.empty(); }
    void take(const PlaneInfo &info, const FRAME *plane) override;
    void forget() { kept_.clear(); }
    const std::vector<Kept> &kept() const { return kept_; }

  private:
    std::vector<const PlaneInfo *> wanted_;
    std::vector<Kept> kept_;
};

/// Runs the block on a mosaic with these registers. Planes go to `planes` where it wants any. Returns why the
/// model ran, null if the line engine or the bypass did. Throws CallError, Error, std::bad_alloc.
const char *run_on_memory(const BlockRegisters &registers, KeptPlanes &planes, const Mosaic &mosaic,
                          const OutputLayouts &out);

} // namespace cfa
