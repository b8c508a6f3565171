#include "tests/support/planes.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include <doctest/doctest.h>

using namespace cfa;

Plane::Plane(int width, int height, int channels, int32_t fill)
    : frame_(CM_NewFRAME(FRAME_TYPE_IMG, channels == 3 ? FRAME_FMT_RGB : FRAME_FMT_MONO, width, height,
                         channels, 12)) {
    std::fill_n(frame_->data, width * height * channels, static_cast<uint32_t>(fill));
}

Plane::Plane(int width, int height, int channels, std::initializer_list<int32_t> samples)
    : Plane(width, height, channels) {
    REQUIRE(samples.size() == static_cast<size_t>(width * height * channels));
    std::copy(samples.begin(), samples.end(), frame_->data);
}

Plane::Plane(const Plane &other)
    : Plane(other.width(), other.height(), static_cast<int>(other.frame_->channels)) {
    std::copy_n(other.frame_->data, other.width() * other.height() * static_cast<int>(other.frame_->channels),
                frame_->data);
}

int32_t Plane::operator()(int y, int x, int c) const {
    const auto reflected = [](int i, int n) { return n - 1 - std::abs(n - 1 - std::abs(i)); };
    return value(frame_.get(), reflected(y, height()), reflected(x, width()), c);
}

Plane Noise::plane(int width, int height, int channels, int32_t low, int32_t high) {
    Plane plane(width, height, channels);
    for (int i = 0; i < width * height * channels; ++i)
        static_cast<FRAME *>(plane)->data[i] = static_cast<uint32_t>(in(low, high));
    return plane;
}

void expect_plane(const char *name, const Plane &got, const std::function<int32_t(int, int, int)> &want) {
    const int channels = static_cast<int>(static_cast<FRAME *>(got)->channels);
    std::ostringstream first;
    int differences = 0;
    for (int y = 0; y < got.height(); ++y)
        for (int x = 0; x < got.width(); ++x)
            for (int c = 0; c < channels; ++c) {
                const int32_t wanted = want(y, x, c);
                if (got(y, x, c) != wanted && differences++ == 0)
                    first << name << ": y " << y << ", x " << x << ", channel " << c << ", got "
                          << got(y, x, c) << ", want " << wanted;
            }
    CHECK_MESSAGE(differences == 0, first.str(), "; differences: ", differences);
}
