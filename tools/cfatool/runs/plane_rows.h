// Planes of a run as they come: kept, or written to files.
#pragma once

#include <map>
#include <mutex>
#include <string>

#include "cmodel/cfa/src/planes.h"
#include "tools/cfatool/base/progress.h"
#include "tools/cfatool/runs/npy.h"

namespace cfatool {

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

/// The planes as NumPy files of a folder, which it makes: NAME.npy, each there when it is complete. Says how
/// far it is, by the planes that the registers in force make.
class PlaneFiles : public PlaneRows {
  public:
    PlaneFiles(const FRAME *raw, std::string folder);
    /// raw.npy, 16 bits a sample where they suffice.
    void put_mosaic() const;

  protected:
    void put(const cfa::PlaneInfo &info, int y, const int32_t *samples) override;

  private:
    PlaneForm form_of(int channels) const;
    const std::string folder_;
    std::map<const cfa::PlaneInfo *, NpyFile> files_;
    Progress progress_;
};

} // namespace cfatool
