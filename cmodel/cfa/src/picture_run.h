// One run over picture files: mosaic in; RGB picture, DC image and sharpen-gain map out.
#pragma once

struct PictureFiles {
    const char *raw; // read to its end and closed before an output is opened
    const char *rgb; // the outputs are written one after another
    const char *dc;
    const char *gain;
};

/// Runs the block with the registers in cfa_reg and cmodel_top_reg. In the regular case the line engine works
/// on the files' rows, and 2 bytes a pixel are kept (4 with sharpening); otherwise whole frames go through
/// cfa_hw. Nothing but speed and memory shows which it was.
void run_picture(const PictureFiles &files);

/// The same, always in whole frames.
void run_picture_in_frames(const PictureFiles &files);
