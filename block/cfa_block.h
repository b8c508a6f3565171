/* clang-format off */
/* cfa_block.h: the block inside another program. C99 and C++; link with -lcfa_block.
 *
 *     cfa_block *block = cfa_block_new();
 *     cfa_block_set(block, "reg_img_bayerid", 3);
 *     cfa_image rgb = {.data = pixels};                     red, green and blue interleaved, rows packed
 *     if (cfa_block_run(block, width, height, raw, 0, &rgb, NULL, NULL) != CFA_OK)
 *         puts(cfa_block_error(block));
 *     cfa_block_delete(block);
 *
 * A block has registers of its own and shares nothing with other blocks: use one from one thread at a time, and as
 * many as you like at once. No function ends the process, prints, logs or reads the environment; a file is read only
 * where a path is given. */
#ifndef CFA_BLOCK_H
#define CFA_BLOCK_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define CFA_API __attribute__((visibility("default")))
#else
#define CFA_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Version of this header; cfa_block_version() gives that of the library. 10000 * major + 100 * minor + patch. */
#define CFA_BLOCK_VERSION 10100
CFA_API int cfa_block_version(void);

/* What every function that can fail returns. A call that fails changes nothing but the error of its block; a
 * run that fails may have dropped the planes of the run before. */
enum {
    CFA_OK = 0,
    CFA_ERROR_ARGUMENT = -1, /* a null pointer, an unknown flag, strides that are odd or make samples overlap */
    CFA_ERROR_REGISTER = -2, /* no register of this name */
    CFA_ERROR_RANGE = -3,    /* the value does not fit the register */
    CFA_ERROR_INI = -4,      /* a line that CFA_INI_STRICT refuses */
    CFA_ERROR_FILE = -5,     /* a file that cannot be read */
    CFA_ERROR_SIZE = -6,     /* a picture too small for the enabled block (below 4 x 3), or too large */
    CFA_ERROR_MEMORY = -7,
    CFA_ERROR_PLANE = -8, /* no plane of this name */
    CFA_ERROR_INTERNAL = -9
};

typedef struct cfa_block cfa_block;

/* A block with all registers at reset, or null without memory. */
CFA_API cfa_block *cfa_block_new(void);
CFA_API void cfa_block_delete(cfa_block *block); /* null is allowed */

/* One line about the last call on this block that failed, "" before any has. Valid until the next call. */
CFA_API const char *cfa_block_error(const cfa_block *block);

/* ---- registers ---------------------------------------------------------------------------------------------- */

/* A register by the key it has in INI files. */
CFA_API int cfa_block_set(cfa_block *block, const char *key, int64_t value);
CFA_API int cfa_block_get(cfa_block *block, const char *key, int32_t *value);
CFA_API int cfa_block_reset(cfa_block *block);

/* What is known of a register; later versions may append members. */
typedef struct cfa_register {
    const char *key;     /* "reg_cfa_edge_tol" */
    const char *section; /* of INI files: "cfa" or "cmodel_top" */
    const char *meaning; /* one line */
    int32_t min, max, reset;
    int32_t bits;
    int32_t is_signed;
} cfa_register;

/* The register at an index from 0 on, in the order of INI files; null behind the last. Lives as long as the library. */
CFA_API const cfa_register *cfa_register_at(size_t index);

/* Values as the tool takes them from an INI file: unknown keys and other sections are ignored, numbers are cut to the
 * width. CFA_INI_STRICT refuses, by its line, what is no INI line, an unknown key in the sections "cfa" and
 * "cmodel_top", a value that is no decimal number, and one that does not fit; then no register is changed. */
#define CFA_INI_STRICT 1u
CFA_API int cfa_block_load_ini(cfa_block *block, const char *path, unsigned flags);
CFA_API int cfa_block_load_ini_text(cfa_block *block, const char *text, size_t length, unsigned flags);

/* Writes all registers as INI text, ended by a zero byte, as far as it fits into `size` bytes; returns the length of
 * the whole text without that byte, so a first call with size 0 measures. */
CFA_API size_t cfa_block_ini_text(const cfa_block *block, char *text, size_t size);

/* ---- running ------------------------------------------------------------------------------------------------ */

/* 16-bit samples in the caller's memory. The sample of pixel (x, y) and channel c lies
 * y * row_stride + x * pixel_stride + c * channel_stride bytes behind data. A stride of 0 stands for packed:
 * channel_stride 2, pixel_stride 2 * channels, row_stride width * pixel_stride. Three planes one behind the other have
 * pixel_stride 2 and channel_stride width * height * 2. Strides may be negative; all must be even, data aligned to 2
 * bytes, and each stride must reach over all that the smaller ones span, so that no two samples share a byte. */
typedef struct cfa_image {
    uint16_t *data; /* null: this output is not wanted */
    ptrdiff_t row_stride;
    ptrdiff_t pixel_stride;
    ptrdiff_t channel_stride;
} cfa_image;

/* Runs the block on a mosaic whose rows are raw_stride bytes apart (0: packed). Outputs that are null pointers are not
 * made. rgb has three channels, red, green, blue; dc and gain one; a gain of 1.0 is 1024. Samples are those of the
 * tool: 0..4095 for mosaics of 0..4095; deeper ones give what the tool gives, cut to 16 bits. Outputs may lie between
 * each other's samples where row and pixel strides are the same, but share no byte, and none may lie within the bounds
 * of the mosaic. The mosaic is read where it is. */
CFA_API int cfa_block_run(cfa_block *block, uint32_t width, uint32_t height, const uint16_t *raw, ptrdiff_t raw_stride,
                          const cfa_image *rgb, const cfa_image *dc, const cfa_image *gain);

/* How many threads the runs that follow may work on, counting the caller's: 1 unless set. More than 2 are 2. A second
 * one takes 0.6 of the time from a megapixel on; where the system has none left, one does the work. */
CFA_API int cfa_block_set_threads(cfa_block *block, int threads);

/* Why the last run went over whole planes, which takes up to forty times as long: null if it did not. */
CFA_API const char *cfa_block_slow_reason(const cfa_block *block);

/* ---- planes between the stages ------------------------------------------------------------------------------- */

/* What is known of a plane; later versions may append members. */
typedef struct cfa_plane_info {
    const char *name;    /* "GH" */
    const char *stage;   /* the function that makes it */
    const char *format;  /* of its samples at regular input: "u12", "s13", "0..32767" */
    const char *readers; /* the functions that read it, a blank between; "" for an output */
    const char *meaning; /* one line */
    const char *image;   /* its debug image, "" for none */
    int32_t channels;    /* 1, or 3 interleaved: red, green, blue */
} cfa_plane_info;

/* The plane at an index from 0 on, in pipeline order; null behind the last. Lives as long as the library. */
CFA_API const cfa_plane_info *cfa_plane_info_at(size_t index);

/* Asks the runs that follow to keep planes: names with commas between; "*" for all, "" for none. */
CFA_API int cfa_block_keep_planes(cfa_block *block, const char *names);

/* A plane as its stage made it: signed where it is signed, not limited, complete. Valid until the block's next run or
 * end; later versions may append members. */
typedef struct cfa_plane {
    const cfa_plane_info *info;
    const int32_t *data; /* height x width x channels, packed */
    uint32_t width, height;
} cfa_plane;

/* A plane that the last run kept, by its name; null where it was not kept, or the registers leave its stage out. */
CFA_API const cfa_plane *cfa_block_plane(const cfa_block *block, const char *name);

#ifdef __cplusplus
}
#endif
#endif
