/* The C side of cfa_dpi_pkg.sv: a block with the frame that it works on. C99, and C++ where the simulator
 * takes that. */
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "cfa_block.h"
#include "svdpi.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { OUTPUTS = 5, LARGEST = 65535, PIXEL = (1 + OUTPUTS) * sizeof(uint16_t) };

typedef struct {
    cfa_block *block;
    uint16_t *samples; /* planes: the mosaic, then the outputs in the order of cfa_output_e */
    int width, height;
    int rows;          /* of the mosaic that have been put */
    int ran;           /* the outputs are those of the mosaic */
    char refused[160]; /* why the last call that failed did so; "" where the block knows */
} Model;

/* For calls that the block does not see. Nothing else has changed by then. */
static int refuse(Model *model, int status, const char *format, ...) {
    va_list values;
    va_start(values, format);
    if (model != NULL)
        vsnprintf(model->refused, sizeof model->refused, format, values);
    va_end(values);
    return status;
}

static int passed_on(Model *model, int status) {
    if (model != NULL && status != CFA_OK)
        model->refused[0] = '\0';
    return status;
}

static cfa_block *block_of(Model *model) {
    return model != NULL ? model->block : NULL;
}

static uint16_t *row_of(const Model *model, int plane, int y) {
    return model->samples + ((size_t)plane * (size_t)model->height + (size_t)y) * (size_t)model->width;
}

/* The elements of an open array by rising index, whatever its direction; null where a row does not fit. */
static void *elements(const svOpenArrayHandle array, size_t row_bytes) {
    return (size_t)svSizeOfArray(array) < row_bytes ? NULL : svGetArrayPtr(array);
}

static int refuse_array(Model *model, const char *call, const svOpenArrayHandle array) {
    return refuse(model, CFA_ERROR_ARGUMENT, "%s: an array of %d for a row of %d", call, svSize(array, 1),
                  model->width);
}

void *cfa_dpi_new(void) {
    Model *const model = (Model *)calloc(1, sizeof(Model));
    if (model != NULL && (model->block = cfa_block_new()) == NULL) {
        free(model);
        return NULL;
    }
    return model;
}

void cfa_dpi_delete(void *handle) {
    Model *const model = (Model *)handle;
    cfa_block_delete(block_of(model));
    if (model != NULL)
        free(model->samples);
    free(model);
}

const char *cfa_dpi_error(void *handle) {
    const Model *const model = (const Model *)handle;
    return model != NULL && model->refused[0] != '\0' ? model->refused
                                                      : cfa_block_error(block_of((Model *)handle));
}

int cfa_dpi_set(void *handle, const char *key, long long value) {
    Model *const model = (Model *)handle;
    return passed_on(model, cfa_block_set(block_of(model), key, value));
}

int cfa_dpi_get(void *handle, const char *key, int *value) {
    Model *const model = (Model *)handle;
    return passed_on(model, cfa_block_get(block_of(model), key, value));
}

int cfa_dpi_load_ini(void *handle, const char *path, int strict) {
    Model *const model = (Model *)handle;
    return passed_on(model, cfa_block_load_ini(block_of(model), path, strict != 0 ? CFA_INI_STRICT : 0));
}

int cfa_dpi_keep_planes(void *handle, const char *names) {
    Model *const model = (Model *)handle;
    return passed_on(model, cfa_block_keep_planes(block_of(model), names));
}

int cfa_dpi_begin(void *handle, int width, int height) {
    Model *const model = (Model *)handle;
    uint16_t *samples = NULL;
    if (model == NULL || width < 1 || height < 1 || width > LARGEST || height > LARGEST)
        return refuse(model, CFA_ERROR_SIZE, "begin: %d x %d, where both are 1 to %d", width, height,
                      LARGEST);
    if ((size_t)width * (size_t)height <= SIZE_MAX / PIXEL) /* where a size_t has 32 bits */
        samples = (uint16_t *)realloc(model->samples, PIXEL * (size_t)width * (size_t)height);
    if (samples == NULL)
        return refuse(model, CFA_ERROR_MEMORY, "begin: not enough memory for %d x %d", width, height);
    model->samples = samples;
    model->width = width;
    model->height = height;
    model->rows = model->ran = 0;
    return CFA_OK;
}

int cfa_dpi_put_row(void *handle, int y, const svOpenArrayHandle row) {
    Model *const model = (Model *)handle;
    const void *data;
    if (model == NULL || model->rows == model->height)
        return refuse(model, CFA_ERROR_ARGUMENT, "put_row: row %d, where the frame is full or none has begun",
                      y);
    if (y != model->rows)
        return refuse(model, CFA_ERROR_ARGUMENT, "put_row: row %d, where row %d is next", y, model->rows);
    if ((data = elements(row, (size_t)model->width * sizeof(uint16_t))) == NULL)
        return refuse_array(model, "put_row", row);
    memcpy(row_of(model, 0, y), data, (size_t)model->width * sizeof(uint16_t));
    ++model->rows;
    return CFA_OK;
}

int cfa_dpi_run(void *handle) {
    Model *const model = (Model *)handle;
    cfa_image rgb, dc, gain;
    int status;
    if (model == NULL || model->rows == 0 || model->rows != model->height)
        return refuse(model, CFA_ERROR_ARGUMENT, "run: %d of %d rows are there",
                      model != NULL ? model->rows : 0, model != NULL ? model->height : 0);
    memset(&dc, 0, sizeof dc); /* packed */
    rgb = gain = dc;
    rgb.data = row_of(model, 1, 0);
    rgb.pixel_stride = sizeof(uint16_t);
    rgb.channel_stride = (ptrdiff_t)sizeof(uint16_t) * model->width * model->height;
    dc.data = row_of(model, 4, 0);
    gain.data = row_of(model, 5, 0);
    status = cfa_block_run(model->block, (uint32_t)model->width, (uint32_t)model->height, model->samples, 0,
                           &rgb, &dc, &gain);
    model->ran = status == CFA_OK;
    return passed_on(model, status);
}

int cfa_dpi_get_row(void *handle, int output, int y, const svOpenArrayHandle row) {
    Model *const model = (Model *)handle;
    void *data;
    if (model == NULL || !model->ran)
        return refuse(model, CFA_ERROR_ARGUMENT, "get_row: no frame has run");
    if (output < 0 || output >= OUTPUTS || y < 0 || y >= model->height)
        return refuse(model, CFA_ERROR_ARGUMENT, "get_row: no row %d of output %d", y, output);
    if ((data = elements(row, (size_t)model->width * sizeof(uint16_t))) == NULL)
        return refuse_array(model, "get_row", row);
    memcpy(data, row_of(model, 1 + output, y), (size_t)model->width * sizeof(uint16_t));
    return CFA_OK;
}

int cfa_dpi_get_plane_row(void *handle, const char *name, int channel, int y, const svOpenArrayHandle row) {
    Model *const model = (Model *)handle;
    const cfa_plane *const plane = model != NULL && model->ran ? cfa_block_plane(model->block, name) : NULL;
    int32_t *data;
    int x;
    if (plane == NULL)
        return refuse(model, CFA_ERROR_PLANE, "get_plane_row: no plane '%s' was kept", name);
    if (channel < 0 || channel >= plane->info->channels || y < 0 || y >= model->height)
        return refuse(model, CFA_ERROR_ARGUMENT, "get_plane_row: no row %d of channel %d in '%s'", y, channel,
                      name);
    if ((data = (int32_t *)elements(row, (size_t)model->width * sizeof(int32_t))) == NULL)
        return refuse_array(model, "get_plane_row", row);
    for (x = 0; x < model->width; ++x)
        data[x] = plane->data[((size_t)y * (size_t)model->width + (size_t)x) * (size_t)plane->info->channels +
                              (size_t)channel];
    return CFA_OK;
}

#ifdef __cplusplus
}
#endif
