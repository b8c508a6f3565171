// A folder of planes and images as the block, or a simulation of it, leaves them.
//
// Beside the files of run_images.h a run folder may hold exact planes, NAME.npy for each of the one list of
// planes and raw.npy for the mosaic, in planes/ or in the folder itself.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cmodel/cfa/src/planes.h"
#include "tools/cfatool/registers/registers.h"

namespace cfatool {

/// One file of samples in a run folder.
struct RunPlane {
    std::string name; // below the folder: planes/GH.npy, dbg/dbg_img_GH.ppm, out.ppm
    std::string path;
    std::string stage;           // that made it; "input" for the mosaic, empty for what is not in the list
    std::string shows;           // one line, empty for what is not in the list
    std::string range;           // of its samples at regular input
    const cfa::PlaneInfo *plane; // null for the mosaic and for what is not in the list
    bool exact;                  // holds every sample of the plane as it is
};

class RunFolder {
  public:
    /// Throws Trouble for what is no folder, and for register files that cannot be read.
    explicit RunFolder(const std::string &path);

    const std::string &path() const { return path_; }

    /// Everything it holds in pipeline order, the exact plane before its image; what is not in the list comes
    /// last, by name.
    std::span<const RunPlane> planes() const { return planes_; }

    /// The file of this name, null if there is none.
    const RunPlane *find(const std::string &name) const;
    /// The exact plane, an output file if need be, or the debug image of a plane of the list ("raw" for the
    /// mosaic); null if there is none.
    const RunPlane *exact(const std::string &plane) const;
    const RunPlane *image(const std::string &plane) const;

    /// The registers of the run; null if the folder has none of cfa.ini, cmodel_top.ini and run.json, which
    /// counts where the others are missing.
    const Registers *registers() const { return registers_.get(); }
    /// The pattern id; nothing if the folder has neither cmodel_top.ini nor, without cfa.ini, run.json.
    std::optional<uint32_t> bayer() const { return bayer_; }

  private:
    std::string path_;
    std::vector<RunPlane> planes_;
    std::shared_ptr<Registers> registers_;
    std::optional<uint32_t> bayer_;
};

} // namespace cfatool
