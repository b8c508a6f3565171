// Outputs that are there already: folders of files, and recorded sums.
#include <filesystem>

#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/regress/makers.h"

namespace cfatool {
namespace {

namespace fs = std::filesystem;

class Expected : public OutputMaker {
  public:
    Sum identity(const Case &c) const override {
        Summer summer;
        for (const Sum &sum : sums_of(c))
            summer.add(sum);
        return summer.sum();
    }
    OutputSums make(const Inputs &inputs) override { return sums_of(inputs.from); }
    bool takes_any_inputs() const override { return false; }

  private:
    virtual OutputSums sums_of(const Case &c) const = 0;
};

class Folders : public Expected {
  public:
    explicit Folders(std::string folder) : folder_(std::move(folder)) {}

    bool make_files(const Inputs &inputs, const std::string &folder, bool) override {
        fs::copy(folder_ + "/" + inputs.from.name, folder,
                 fs::copy_options::recursive | fs::copy_options::overwrite_existing);
        return true;
    }

  private:
    OutputSums sums_of(const Case &c) const override { return sums_of_outputs(folder_ + "/" + c.name); }

    const std::string folder_;
};

class Recorded : public Expected {
  public:
    explicit Recorded(RecordedSums sums) : sums_(std::move(sums)) {}

    bool make_files(const Inputs &, const std::string &, bool) override { return false; }

  private:
    OutputSums sums_of(const Case &c) const override {
        const auto found = sums_.find(c.name);
        if (found == sums_.end())
            throw Trouble("no sums are recorded");
        return found->second;
    }

    const RecordedSums sums_;
};

} // namespace

std::unique_ptr<OutputMaker> make_folders(const std::string &folder) {
    return std::make_unique<Folders>(folder);
}

std::unique_ptr<OutputMaker> make_recorded(RecordedSums sums) {
    return std::make_unique<Recorded>(std::move(sums));
}

} // namespace cfatool
