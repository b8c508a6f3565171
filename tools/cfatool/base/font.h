// A small font of capitals and digits, 5 x 7 dots a letter.
#pragma once

namespace cfatool {

/// Whether the dot (column, row) of a line of text is ink: letters are 6 dots apart, row 0 is the top, 7
/// rows. Characters other than A..Z, 0..9, - . and _ are blank, and so is everything behind the end of the
/// text. REQUIRES column >= 0.
bool font_dot(const char *text, int column, int row);

} // namespace cfatool
