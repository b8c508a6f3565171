// The C functions: each a shell that turns exceptions into a code and a line.
#include "block/cfa_block.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

#include "block/block.h"
#include "cmodel/common/error.h"

using namespace cfa;

struct cfa_block {
    BlockRegisters registers;
    KeptPlanes planes{""};
    std::vector<cfa_plane> shown; // what cfa_block_plane hands out
    int threads = 1;
    const char *slow_reason = nullptr;
    char error[4352] = ""; // room for the longest path and what is wrong with it
};

namespace {

using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

int fail(cfa_block &block, int code, const char *line) {
    std::snprintf(block.error, sizeof block.error, "%s", line);
    return code;
}

// Runs the body of a call.
template <class Body> int call(cfa_block *block, const Body &body) noexcept {
    if (block == nullptr)
        return CFA_ERROR_ARGUMENT;
    try {
        body();
        return CFA_OK;
    } catch (const CallError &error) {
        return fail(*block, error.code, error.what());
    } catch (const Error &error) {
        return fail(*block, error.kind() == Error::Kind::picture_size ? CFA_ERROR_SIZE : CFA_ERROR_FILE,
                    error.what());
    } catch (const std::bad_alloc &) {
        return fail(*block, CFA_ERROR_MEMORY, "not enough memory");
    } catch (const std::exception &error) {
        return fail(*block, CFA_ERROR_INTERNAL, error.what());
    } catch (...) {
        return fail(*block, CFA_ERROR_INTERNAL, "an unknown error");
    }
}

void require(bool condition, const char *line) {
    if (!condition)
        throw CallError(CFA_ERROR_ARGUMENT, line);
}

Layout wanted(const char *name, const cfa_image *image, uint32_t width, uint32_t height, int channels) {
    return image == nullptr || image->data == nullptr ? Layout()
                                                      : Layout(name, *image, width, height, channels);
}

void load(cfa_block &block, std::FILE *stream, const char *name, unsigned flags) {
    require((flags & ~CFA_INI_STRICT) == 0, "unknown flag");
    load_ini(block.registers, stream, name, (flags & CFA_INI_STRICT) != 0);
}

const std::vector<cfa_plane_info> &plane_infos() {
    static const std::vector<cfa_plane_info> INFOS = [] {
        std::vector<cfa_plane_info> infos;
        for (const PlaneInfo &plane : planes())
            infos.push_back({plane.name, plane.stage, plane.format, plane.readers, plane.shows,
                             plane.image.file, plane.channels});
        return infos;
    }();
    return INFOS;
}

const std::vector<cfa_register> &registers() {
    static const std::vector<cfa_register> REGISTERS = [] {
        std::vector<cfa_register> all;
        for (const RegisterTable *table : {&cfa_reg_hw_table(), &cmodel_top_reg_hw_table()})
            for (const RegisterInfo &info : table->registers)
                all.push_back({info.key, table->name, info.meaning, register_min(info.bits, info.is_signed),
                               register_max(info.bits, info.is_signed), info.reset, info.bits,
                               info.is_signed});
        return all;
    }();
    return REGISTERS;
}

// Element of a list, null behind its end and without the memory to make it.
template <class T> const T *element(const std::vector<T> &(*list)(), size_t index) noexcept {
    try {
        return index < list().size() ? &list()[index] : nullptr;
    } catch (...) {
        return nullptr;
    }
}

void show_kept(cfa_block &block) {
    for (const KeptPlanes::Kept &plane : block.planes.kept()) {
        const size_t index = static_cast<size_t>(plane.info - planes().data());
        block.shown.push_back({&plane_infos()[index], plane.samples(), plane.width, plane.height});
    }
}

void run(cfa_block &block, uint32_t width, uint32_t height, const uint16_t *raw, ptrdiff_t raw_stride,
         const cfa_image *rgb, const cfa_image *dc, const cfa_image *gain) {
    if (!frame_size_ok(width, height, 3))
        throw CallError(CFA_ERROR_SIZE, "the picture is too large");
    require(raw != nullptr || width == 0 || height == 0, "raw: null");
    const cfa_image image{const_cast<uint16_t *>(raw), raw_stride, 2, 0};
    const Mosaic mosaic{wanted("raw", &image, width, height, 1), width, height};
    const OutputLayouts out{wanted("rgb", rgb, width, height, 3), wanted("dc", dc, width, height, 1),
                            wanted("gain", gain, width, height, 1)};
    require(out.rgb.apart_from(out.dc) && out.rgb.apart_from(out.gain) && out.dc.apart_from(out.gain),
            "two outputs share memory");
    for (const Layout *output : {&out.rgb, &out.dc, &out.gain})
        require(!*output || !mosaic.layout || mosaic.layout.bounds_apart_from(*output),
                "an output lies within the mosaic");
    block.shown.clear();
    block.slow_reason = run_on_memory(block.registers, block.planes, mosaic, out, block.threads);
    show_kept(block);
}

} // namespace

int cfa_block_version(void) {
    return CFA_BLOCK_VERSION;
}

cfa_block *cfa_block_new(void) {
    try {
        return new cfa_block;
    } catch (...) {
        return nullptr;
    }
}

void cfa_block_delete(cfa_block *block) {
    delete block;
}

const char *cfa_block_error(const cfa_block *block) {
    return block == nullptr ? "no block" : block->error;
}

int cfa_block_set(cfa_block *block, const char *key, int64_t value) {
    return call(block, [&] {
        require(key != nullptr, "key: null");
        block->registers.set(key, value);
    });
}

int cfa_block_get(cfa_block *block, const char *key, int32_t *value) {
    return call(block, [&] {
        require(key != nullptr && value != nullptr, "key or value: null");
        *value = block->registers.get(key);
    });
}

int cfa_block_reset(cfa_block *block) {
    return call(block, [&] { block->registers = BlockRegisters(); });
}

const cfa_register *cfa_register_at(size_t index) {
    return element(registers, index);
}

int cfa_block_load_ini(cfa_block *block, const char *path, unsigned flags) {
    return call(block, [&] {
        require(path != nullptr, "path: null");
        const Stream stream(std::fopen(path, "r"), std::fclose);
        if (!stream && errno == ENOMEM)
            throw std::bad_alloc();
        if (!stream)
            throw CallError(CFA_ERROR_FILE, std::string(path) + ": " + std::strerror(errno));
        load(*block, stream.get(), path, flags);
    });
}

int cfa_block_load_ini_text(cfa_block *block, const char *text, size_t length, unsigned flags) {
    return call(block, [&] {
        require(text != nullptr || length == 0, "text: null");
        const Stream stream = open_text(text, length);
        load(*block, stream.get(), "text", flags);
    });
}

size_t cfa_block_ini_text(const cfa_block *block, char *text, size_t size) {
    if (block == nullptr)
        return 0;
    try {
        const std::string whole = block->registers.ini_text();
        if (text != nullptr && size > 0)
            std::snprintf(text, size, "%s", whole.c_str());
        return whole.size();
    } catch (...) {
        return 0;
    }
}

int cfa_block_run(cfa_block *block, uint32_t width, uint32_t height, const uint16_t *raw,
                  ptrdiff_t raw_stride, const cfa_image *rgb, const cfa_image *dc, const cfa_image *gain) {
    return call(block, [&] { run(*block, width, height, raw, raw_stride, rgb, dc, gain); });
}

int cfa_block_set_threads(cfa_block *block, int threads) {
    return call(block, [&] {
        require(threads >= 1, "threads: not 1 or more");
        block->threads = std::min(threads, 2);
    });
}

const char *cfa_block_slow_reason(const cfa_block *block) {
    return block == nullptr ? nullptr : block->slow_reason;
}

const cfa_plane_info *cfa_plane_info_at(size_t index) {
    return element(plane_infos, index);
}

int cfa_block_keep_planes(cfa_block *block, const char *names) {
    return call(block, [&] {
        require(names != nullptr, "names: null");
        KeptPlanes planes(names);
        block->shown.clear();
        block->planes = std::move(planes);
    });
}

const cfa_plane *cfa_block_plane(const cfa_block *block, const char *name) {
    if (block == nullptr || name == nullptr)
        return nullptr;
    for (const cfa_plane &plane : block->shown)
        if (std::strcmp(plane.info->name, name) == 0)
            return &plane;
    return nullptr;
}
