// White space, as files of registers and of pictures understand it.
#pragma once

namespace cfatool {

inline constexpr const char BLANKS[] = " \t\n\v\f\r";

constexpr bool is_blank(int c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

} // namespace cfatool
