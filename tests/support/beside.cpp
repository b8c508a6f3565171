#include "tests/support/beside.h"

#include <algorithm>
#include <filesystem>
#include <ostream>

#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/planes.h"
#include "tests/support/support.h"

using namespace cfa;

namespace {

constexpr int32_t MISSING = -123456789;

// The samples of the planes that it wants.
class Recorder : public PlaneTaker {
  public:
    Recorder(const Plane &raw, uint32_t seed) : raw_(raw), noise_(seed) {
        for (const PlaneInfo &plane : planes())
            if (seed == 0 || noise_.in(0, 5) == 0)
                found[plane.name];
    }
    bool wants(const PlaneInfo &plane) const override { return found.contains(plane.name); }
    void take(const PlaneInfo &plane, const FRAME *frame) override {
        for (int y = 0; y < raw_.height() && wants(plane); ++y)
            for (int x = 0; x < raw_.width(); ++x)
                for (int c = 0; c < plane.channels; ++c)
                    found[plane.name].push_back(value(frame, y, x, c));
    }
    void row(const PlaneInfo &plane, int y, const SplitRow<int16_t> *channels) override {
        add(plane, y, channels);
    }
    void row(const PlaneInfo &plane, int y, const SplitRow<int32_t> *channels) override {
        add(plane, y, channels);
    }

    std::map<std::string, std::vector<int32_t>> found;

  private:
    template <class T> void add(const PlaneInfo &plane, int y, const SplitRow<T> *channels) {
        std::vector<int32_t> &samples = found.at(plane.name);
        samples.resize(static_cast<size_t>(y * raw_.width() * plane.channels),
                       MISSING); // rows come in order
        for (int x = 0; x < raw_.width(); ++x)
            for (int c = 0; c < plane.channels; ++c)
                samples.push_back(channels[c].half[x % 2][x / 2]);
    }
    const Plane &raw_;
    Noise noise_;
};

template <class T> void compare_maps(std::ostream &out, const std::map<std::string, T> &want,
                                     const std::map<std::string, T> &got) {
    for (const auto &[name, found] : want) {
        const auto other = got.find(name);
        if (other == got.end() || other->second.size() != found.size())
            out << name << ": of another size\n";
        else if (other->second != found)
            out << name << ": differs first at element "
                << std::mismatch(found.begin(), found.end(), other->second.begin()).first - found.begin()
                << "\n";
    }
    if (got.size() != want.size())
        out << got.size() << " planes or images, not " << want.size() << "\n";
}

} // namespace

Found run_beside(const Plane &raw, Beside beside, const std::function<void()> &way) {
    if (beside == Beside::nothing) {
        way();
        return {};
    }
    if (beside == Beside::images) {
        const TempFolder folder;
        std::snprintf(dbg_path, sizeof dbg_path, "%s", folder.path.c_str());
        dump_dbg_img = true;
        way();
        dump_dbg_img = false;
        Found found;
        for (const auto &entry : std::filesystem::directory_iterator(folder.path))
            found.images[entry.path().filename()] = read_file(entry.path());
        return found;
    }
    Recorder recorder(raw,
                      beside == Beside::planes ? 0 : 1 + static_cast<uint32_t>(raw.width() + raw.height()));
    const BoundRegisters bound(cfa_reg, cmodel_top_reg, &recorder);
    way();
    return {recorder.found, {}};
}

void compare_found(std::ostream &out, const Found &want, const Found &got) {
    compare_maps(out, want.planes, got.planes);
    compare_maps(out, want.images, got.images);
}
