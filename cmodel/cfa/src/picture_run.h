// One run over picture files: mosaic in; RGB picture, DC image and sharpen-gain map out.
#pragma once

#include "cmodel/cfa/src/lines/file_rows.h"

namespace cfa {

/// Resets the registers of both blocks, loads each from its file and writes them to the log.
void load_registers(const char *cfa_ini, const char *cmodel_top_ini);

/// Takes a line for standard error about a run that goes on.
using Notice = void (*)(const char *line);

/// Runs the block on a picture file with the registers in force. The input is read to its end and closed
/// before an output is opened. In the regular case the line engine works on the files' rows, and 2 bytes a
/// pixel are kept (4 with sharpening); otherwise whole frames go through run_block. Nothing but speed and
/// memory shows which it was. Throws Error and std::bad_alloc.
void run_picture(const char *raw_path, const OutputPaths &out, Notice notice);

/// The same, always in whole frames.
void run_picture_in_frames(const char *raw_path, const OutputPaths &out, Notice notice);

} // namespace cfa
