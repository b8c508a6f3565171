// Runs of the block inside this program: whole run folders, and planes in memory.
#pragma once

#include <map>
#include <mutex>
#include <string>

#include "cmodel/cfa/src/planes.h"
#include "tools/cfatool/registers/registers.h"

namespace cfatool {

/// What a run is made from.
struct RunRequest {
    std::string raw;              // the mosaic, P5; a colour picture (PNG, P6) if it is to be sampled
    std::string name;             // of the input in the record, if not that of the file
    std::string cfa_ini, top_ini; // text of the register files
    bool mosaic = false;          // samples a colour picture through the pattern
    bool debug = false;           // debug images
    bool planes = false;          // exact planes
    std::string folder;           // made by the run; nothing may stand there but an empty folder
};

/// Makes a run folder with the bytes that cfa_cmodel gives: raw.ppm, outputs, both register files, cfa.log,
/// run.json, and what else is asked for. It appears when all has gone well. Throws Trouble and cfa::Error.
void make_run(const RunRequest &request);

/// Every plane of a run, row by row, 32 bits a sample; from the line engine rows of all planes come in turn.
class PlaneRows : public cfa::PlaneTaker {
  public:
    explicit PlaneRows(const FRAME *raw) : raw_(raw) {}
    bool wants(const cfa::PlaneInfo &) const override { return true; }
    void take(const cfa::PlaneInfo &info, const FRAME *plane) override;
    void row(const cfa::PlaneInfo &info, int y, const cfa::SplitRow<int16_t> *channels) override;
    void row(const cfa::PlaneInfo &info, int y, const cfa::SplitRow<int32_t> *channels) override;

  protected:
    virtual void put(const cfa::PlaneInfo &info, int y, const int32_t *samples) = 0;
    const FRAME *const raw_;

  private:
    template <class T> void join(const cfa::PlaneInfo &info, int y, const cfa::SplitRow<T> *channels);
    std::mutex one_at_a_time_;
};

/// Planes by name.
using Planes = std::map<std::string, cfa::FramePtr>;

/// Keeps what a run or, of any mosaic, a stage of the model makes.
class TakenPlanes : public PlaneRows {
  public:
    explicit TakenPlanes(const FRAME *raw = nullptr) : PlaneRows(raw) {}
    void take(const cfa::PlaneInfo &info, const FRAME *plane) override;
    Planes planes;

  protected:
    void put(const cfa::PlaneInfo &info, int y, const int32_t *samples) override;
};

/// A mosaic as the block reads it. Throws Trouble for a missing file, cfa::Error for a malformed one.
cfa::FramePtr read_mosaic(const std::string &path);

/// Every plane of a run on this mosaic. Throws cfa::Error for one that is too small.
Planes planes_of_run(const Registers &registers, const FRAME *raw);

} // namespace cfatool
