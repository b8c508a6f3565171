// The run, or the two runs, that a page shows.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "tools/cfatool/base/json_text.h"
#include "tools/cfatool/page/pyramid.h"
#include "tools/cfatool/runs/plane_file.h"
#include "tools/cfatool/runs/run_folder.h"

namespace cfatool {

/// What a tile or a summary is of: the first run, the other, or the first minus the other.
enum class Side { a, b, difference };

/// A plane or image of one run, or of both.
struct PagePlane {
    std::string id; // name of the file, or of the exact plane
    RunPlane about; // as the first run that has it says
    std::array<std::unique_ptr<PlaneFile>, 2> file;
    std::string trouble; // why a file cannot be shown

    bool seen() const { return file[0] || file[1]; }
    /// All 0 for what is not seen.
    PlaneForm form() const { return seen() ? (file[0] ? file[0] : file[1])->form() : PlaneForm{}; }
    bool comparable() const { return file[0] && file[1]; }
    bool has(Side side) const {
        return side == Side::difference ? comparable() : file[side == Side::b] != nullptr;
    }
    /// Samples of all its files.
    uint64_t samples() const;
};

class PageRuns {
  public:
    /// Opens every plane and image. `other` may be empty. Throws Trouble for what is no folder, and where
    /// nothing can be shown.
    PageRuns(const std::string &run, const std::string &other);

    const std::vector<PagePlane> &planes() const { return planes_; }
    bool two() const { return runs_.size() == 2; }

    /// What the page must know before it shows anything; `source` is where tiles come from.
    Json manifest(const std::string &source) const;

    /// What differs where: a word for each stage and plane, and where to begin. Reads all samples. REQUIRES
    /// two().
    Json verdict() const;

  private:
    void add(const std::string &id, const RunPlane *a, const RunPlane *b);
    Json plane_json(const PagePlane &plane) const;

    std::vector<RunFolder> runs_;
    std::vector<PagePlane> planes_;
};

/// All samples of a side of a plane. REQUIRES plane.has(side).
PlaneSamples read_side(const PagePlane &plane, Side side);

/// One tile of level 0, read from the file alone. REQUIRES plane.has(side), no difference, and the tile to
/// exist.
std::string read_tile(const PagePlane &plane, Side side, int column, int row);

Json summary_json(const PlaneSummary &summary, int channels);

/// The page of this manifest. `tiles` is the JSON of tiles that it carries, or empty.
std::string page_text(const Json &manifest, const std::string &tiles);

} // namespace cfatool
