// Every instruction-set variant of every kernel in this program, not only the one that was chosen: put in the
// place that the loader filled, one kernel and one variant at a time, for all that the machine runs.
#include <doctest/doctest.h>

#include "cmodel/cfa/src/lines/kernels/file_words.h"
#include "cmodel/cfa/src/lines/kernels/kernels.h"
#include "cmodel/cfa/src/lines/kernels/plane_words.h"

#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__ELF__)

#include <elf.h>
#include <link.h>
#include <map>
#include <sys/mman.h>

#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/lines/frame_rows.h"
#include "cmodel/cfa/src/planes.h"
#include "tests/support/equality.h"
#include "tests/support/registers.h"
#include "tests/support/support.h"

using namespace cfa;

namespace {

using Place = void *; // of a function

struct Kernel {
    std::string name;
    Place *chosen = nullptr;
    std::vector<Place> variants; // that this machine runs
};

bool runs(const std::string &suffix) {
    return suffix == ".default" || (suffix == ".arch_x86_64_v3" && __builtin_cpu_supports("x86-64-v3")) ||
           (suffix == ".arch_x86_64_v4" && __builtin_cpu_supports("x86-64-v4"));
}

// From the symbols and relocations of this program: a place for each resolver, functions by name and suffix.
std::vector<Kernel> kernels() {
    const std::string file = read_file("/proc/self/exe");
    uintptr_t base = 0;
    dl_iterate_phdr(
        [](dl_phdr_info *info, size_t, void *out) {
            *static_cast<uintptr_t *>(out) = info->dlpi_addr;
            return 1; // the first is the program
        },
        &base);
    const auto at = [&](size_t offset) { return file.data() + offset; };
    const auto *const header = reinterpret_cast<const Elf64_Ehdr *>(at(0));
    const auto *const sections = reinterpret_cast<const Elf64_Shdr *>(at(header->e_shoff));
    std::map<uintptr_t, Kernel> by_resolver;
    std::map<std::string, std::vector<Place>> variants;
    for (int s = 0; s < header->e_shnum; ++s) {
        const Elf64_Shdr &section = sections[s];
        if (section.sh_type == SHT_SYMTAB)
            for (size_t i = 0; i < section.sh_size / sizeof(Elf64_Sym); ++i) {
                const auto &symbol = reinterpret_cast<const Elf64_Sym *>(at(section.sh_offset))[i];
                const std::string name = at(sections[section.sh_link].sh_offset + symbol.st_name);
                const std::string suffix = name.substr(std::min(name.find('.'), name.size()));
                const std::string kernel = name.substr(0, name.size() - suffix.size());
                if (!kernel.starts_with("_ZN3cfa"))
                    continue;
                if (suffix == ".resolver")
                    by_resolver[symbol.st_value].name = kernel;
                else if (runs(suffix))
                    variants[kernel].push_back(reinterpret_cast<Place>(base + symbol.st_value));
            }
        if (section.sh_type == SHT_RELA)
            for (size_t i = 0; i < section.sh_size / sizeof(Elf64_Rela); ++i) {
                const auto &entry = reinterpret_cast<const Elf64_Rela *>(at(section.sh_offset))[i];
                if (ELF64_R_TYPE(entry.r_info) == R_X86_64_IRELATIVE)
                    by_resolver[static_cast<uintptr_t>(entry.r_addend)].chosen =
                        reinterpret_cast<Place *>(base + entry.r_offset);
            }
    }
    std::vector<Kernel> found;
    for (auto &[resolver, kernel] : by_resolver)
        if (!kernel.name.empty()) {
            kernel.variants = variants[kernel.name];
            found.push_back(kernel);
        }
    return found;
}

// Puts a function in the place of a kernel for as long as it lives.
class Instead {
  public:
    Instead(const Kernel &kernel, Place function) : place_(kernel.chosen), before_(*place_) {
        const uintptr_t page = reinterpret_cast<uintptr_t>(place_) & ~uintptr_t{4095};
        mprotect(reinterpret_cast<void *>(page), 8192, PROT_READ | PROT_WRITE); // the loader closed it
        *place_ = function;
    }
    ~Instead() { *place_ = before_; }

  private:
    Place *const place_;
    const Place before_;
};

struct Picture {
    uint32_t seed;
    Plane raw;
};

using Samples = std::vector<int32_t>;

// Conversions of rows, which pictures in frames do not need.
template <class Sample> void convert_rows(Samples &out) {
    constexpr int WIDTH = 203, HALF = 128;
    Noise noise(1);
    uint8_t bytes[3 * WIDTH];
    uint16_t words[3 * WIDTH];
    for (int i = 0; i < 3 * WIDTH; ++i)
        bytes[i] = static_cast<uint8_t>(noise.in(0, 255)),
        words[i] = static_cast<uint16_t>(noise.in(0, 65535));
    out.push_back(union_of_words(words, WIDTH) + union_of_samples(words + 1, WIDTH));
    Sample half[3][2][HALF] = {};
    const auto keep = [&](const auto &row) { out.insert(out.end(), std::begin(row), std::end(row)); };
    split_words(bytes, WIDTH, half[0][0], half[0][1]);
    split_words(words, WIDTH, half[1][0], half[1][1]);
    split_samples(words + WIDTH, WIDTH, half[2][0], half[2][1]);
    SplitRow<Sample> rows[3];
    for (int k = 0; k < 3; ++k) {
        keep(half[k][0]), keep(half[k][1]);
        rows[k] = {{half[k][0], half[k][1]}};
    }
    join_words(rows[1], WIDTH, bytes), keep(bytes);
    join_words(rows[1], WIDTH, words), keep(words);
    join_samples(rows[2], WIDTH, words), keep(words);
    join_words(rows[0], rows[1], rows[2], WIDTH, bytes), keep(bytes);
    join_words(rows[0], rows[1], rows[2], WIDTH, words), keep(words);
    join_samples(rows[0], rows[1], rows[2], WIDTH, words), keep(words);
    int16_t limited[HALF] = {}, positive[HALF] = {}, negative[HALF] = {};
    limited_magnitudes(half[1][0], 4095, limited, WIDTH / 2), keep(limited);
    low_words(half[2][0], limited, WIDTH / 2), keep(limited);
    signed_parts(half[2][1], positive, negative, WIDTH / 2), keep(positive), keep(negative);
}

// Every plane, so that the kernels work too that only a taker has need of.
class AllPlanes : public PlaneTaker {
  public:
    AllPlanes(Samples &out, int width) : out_(out), width_(width) {}
    bool wants(const PlaneInfo &) const override { return true; }
    void take(const PlaneInfo &, const FRAME *) override {}
    void row(const PlaneInfo &plane, int, const SplitRow<int16_t> *row) override { keep(plane, row); }
    void row(const PlaneInfo &plane, int, const SplitRow<int32_t> *row) override { keep(plane, row); }

  private:
    template <class T> void keep(const PlaneInfo &plane, const SplitRow<T> *row) {
        std::vector<int32_t> samples(static_cast<size_t>(width_ * plane.channels));
        join_exact(row, plane.channels, width_, samples.data());
        out_.insert(out_.end(), samples.begin(), samples.end());
    }
    Samples &out_;
    const int width_;
};

Samples all_samples(const std::vector<Picture> &pictures) {
    Samples out;
    convert_rows<int16_t>(out);
    convert_rows<int32_t>(out);
    for (const Picture &picture : pictures) {
        draw_registers(picture.seed);
        const Plane &raw = picture.raw, rgb(raw, 3), dc(raw, 1), gain(raw, 1);
        AllPlanes taker(out, raw.width());
        const BoundRegisters bound(cfa_reg, cmodel_top_reg, &taker);
        if (!cfa_lines(raw, rgb, dc, gain))
            return {};
        for (int y = 0; y < raw.height(); ++y)
            for (int x = 0; x < raw.width(); ++x)
                out.insert(out.end(), {rgb(y, x, 0), rgb(y, x, 1), rgb(y, x, 2), dc(y, x), gain(y, x)});
    }
    return out;
}

} // namespace

TEST_CASE_FIXTURE(FreshRegisters, "every variant of every kernel gives the same samples") {
    std::vector<Picture> pictures;
    for (uint32_t seed = 0; seed < 60; ++seed) {
        draw_registers(seed);
        pictures.push_back({seed, drawn_mosaic(seed, small_size(seed))});
    }
    const Samples want = all_samples(pictures);
    REQUIRE(!want.empty());
    const std::vector<Kernel> all = kernels();
    size_t others = 0;
    for (const Kernel &kernel : all) {
        CAPTURE(kernel.name);
        REQUIRE(kernel.chosen != nullptr);
        REQUIRE(std::count(kernel.variants.begin(), kernel.variants.end(), *kernel.chosen) == 1);
        {
            const Instead nothing(kernel, reinterpret_cast<Place>(+[] { throw &kernels; }));
            CHECK_THROWS(all_samples(pictures)); // the pictures come to it
        }
        for (const Place variant : kernel.variants) {
            others += variant != *kernel.chosen;
            const Instead other(kernel, variant);
            CHECK((all_samples(pictures) == want));
        }
    }
    MESSAGE(all.size(), " kernels, ", others, " variants besides the chosen ones");
}

#endif
