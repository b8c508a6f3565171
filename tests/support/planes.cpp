#include "tests/support/planes.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>

#include <doctest/doctest.h>

#include "cmodel/common/color_id.h"

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

int reflected(int i, int n) {
    return n - 1 - std::abs(n - 1 - std::abs(i));
}

int32_t Plane::operator()(int y, int x, int c) const {
    return value(frame_.get(), reflected(y, height()), reflected(x, width()), c);
}

int32_t Noise::in(int32_t low, int32_t high) {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    const uint64_t span = static_cast<uint64_t>(int64_t{high} - low + 1);
    return static_cast<int32_t>(low + static_cast<int64_t>((state_ >> 33) % span));
}

Plane Noise::plane(int width, int height, int channels, int32_t low, int32_t high) {
    Plane plane(width, height, channels);
    for (int i = 0; i < width * height * channels; i++)
        static_cast<FRAME *>(plane)->data[i] = static_cast<uint32_t>(in(low, high));
    return plane;
}

namespace {

void visit(const char *kernel, const std::function<void(int dy, int dx, int digit)> &act) {
    std::string digits = kernel;
    std::erase(digits, ' ');
    const int side = static_cast<int>(std::lround(std::sqrt(static_cast<double>(digits.size()))));
    REQUIRE(side * side == static_cast<int>(digits.size()));
    for (int i = 0; i < side * side; i++)
        if (digits[i] != '.')
            act(i / side - side / 2, i % side - side / 2, digits[i] - '0');
}

} // namespace

int32_t weighted(const Plane &plane, int y, int x, const char *kernel, int c) {
    int32_t sum = 0;
    visit(kernel, [&](int dy, int dx, int digit) { sum += digit * plane(y + dy, x + dx, c); });
    return sum;
}

std::vector<int32_t> picked(const Plane &plane, int y, int x, const char *kernel) {
    std::vector<int32_t> samples;
    visit(kernel, [&](int dy, int dx, int) { samples.push_back(plane(y + dy, x + dx)); });
    return samples;
}

int code_at(int y, int x, uint32_t bayer_id) {
    static const char *const bayer[4] = {"0123", "1032", "2301", "3210"};
    if (bayer_id < 4)
        return bayer[bayer_id][y % 2 * 2 + x % 2] - '0';
    return static_cast<int>(CM_GET_COLOR_ID(y, x, bayer_id));
}

Plane flat_colors(int width, int height, uint32_t bayer_id, int32_t red, int32_t green, int32_t blue) {
    Plane raw(width, height);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            const int code = code_at(y, x, bayer_id);
            raw.set(y, x, 0, code == 3 ? red : code == 0 ? blue : green);
        }
    return raw;
}

void for_each_mosaic(const std::function<void(const Plane &, uint32_t)> &test) {
    Noise noise(20);
    const auto run = [&](const char *fill, uint32_t id, const Plane &raw) {
        INFO(fill, ", pattern id ", id);
        test(raw, id);
    };
    const auto with_missing_samples = [&](Plane raw) {
        for (int i = 0; i < 30; i++)
            raw.set(noise.in(0, raw.height() - 1), noise.in(0, raw.width() - 1), 0, -257);
        return raw;
    };
    for (uint32_t id = 0; id < 4; id++) {
        Plane impulse(7, 6);
        impulse.set(2, 3, 0, 1000);
        run("impulse", id, impulse);
        run("flat colors", id, flat_colors(6, 5, id, 3000, 1001, 402));
        run("0 and 1", id, noise.plane(9, 8, 1, 0, 1));
        run("saturated", id, noise.plane(7, 7, 1, 4094, 4095));
        run("noise", id, noise.plane(11, 9, 1, 0, 4095));
        run("deep", id, noise.plane(8, 6, 1, 0, 1 << 27));
        run("missing samples", id, with_missing_samples(noise.plane(8, 7, 1, 0, 40)));
        run("missing samples of 16 bits", id, with_missing_samples(noise.plane(8, 7, 1, 0, 65535)));
        run("smallest", id, noise.plane(4, 3, 1, 0, 4095));
    }
    for (uint32_t id : {4u, 8u, 13u, 15u})
        run("4 x 4", id, noise.plane(9, 7, 1, 0, 4095));
}

void expect_plane(const char *name, const Plane &got, const std::function<int32_t(int, int, int)> &want) {
    const int channels = static_cast<int>(static_cast<FRAME *>(got)->channels);
    std::ostringstream first;
    int differences = 0;
    for (int y = 0; y < got.height(); y++)
        for (int x = 0; x < got.width(); x++)
            for (int c = 0; c < channels; c++) {
                const int32_t wanted = want(y, x, c);
                if (got(y, x, c) != wanted && differences++ == 0)
                    first << name << ": y " << y << ", x " << x << ", channel " << c << ", got "
                          << got(y, x, c) << ", want " << wanted;
            }
    CHECK_MESSAGE(differences == 0, first.str(), "; differences: ", differences);
}
