// What a case is run on: a picture and registers, read or drawn.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cmodel/cfa/src/lines/file_rows.h"
#include "cmodel/common/frame.h"
#include "tools/cfatool/registers/registers.h"
#include "tools/cfatool/regress/plan.h"
#include "tools/cfatool/regress/sums.h"

namespace cfatool {

/// A mosaic: the words of a file where the line engine takes them as they are, else a frame.
class Mosaic {
  public:
    /// Throws Trouble for a missing file, cfa::Error for a malformed one.
    static std::shared_ptr<Mosaic> from_file(const std::string &path);
    static std::shared_ptr<Mosaic> from_frame(cfa::FramePtr frame, const Sum &sum);

    const FRAME *frame();                                           // made when first asked for
    cfa::WordStore *words() { return words_ ? &*words_ : nullptr; } // null: there is only the frame
    const std::string &path() const { return path_; }               // empty: of no file
    const Sum &sum() const { return sum_; }

  private:
    std::string path_;
    std::optional<cfa::WordStore> words_;
    cfa::FramePtr frame_;
    Sum sum_;
};

struct Inputs {
    Case from;
    std::shared_ptr<Mosaic> mosaic;
    std::shared_ptr<const Registers> registers;
    Sum sum; // of samples, register values and id
};

/// Loads one case after another; a picture or register file that several cases in a row share is read once.
class InputLoader {
  public:
    /// Throws Trouble and cfa::Error.
    Inputs load(const Case &c);

  private:
    std::string raw_name_;
    std::shared_ptr<Mosaic> raw_;
};

/// The same with another mosaic or other registers.
Inputs make_inputs(const Case &from, std::shared_ptr<Mosaic> mosaic,
                   std::shared_ptr<const Registers> registers);

/// A copy, to be changed.
std::shared_ptr<Registers> copy_registers(const Registers &registers);

/// Writes raw.ppm, cfa.ini (the registers away from their resets) and cmodel_top.ini. Throws Trouble.
void write_inputs(const Inputs &inputs, const std::string &folder);

} // namespace cfatool
