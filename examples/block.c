/* The block on a mosaic in memory: registers from an INI file, one pixel checked. C99 or C++.
 *   cc block.c $(pkg-config --cflags --libs cfa_block) -o block && ./block cfa.ini */
#include <stdio.h>

#include <cfa_block.h>

enum { WIDTH = 64, HEIGHT = 48 };

int main(int argc, char **argv) {
    static uint16_t raw[HEIGHT][WIDTH], rgb[HEIGHT][WIDTH][3];
    const cfa_image out = {&rgb[0][0][0], 0, 0, 0};
    cfa_block *const block = cfa_block_new();
    int x, y, status = 1;

    for (y = 0; y < HEIGHT; ++y)
        for (x = 0; x < WIDTH; ++x)
            raw[y][x] = y % 2 == 0 && x % 2 == 0 ? 1500 : 1000; /* red; R Gr / Gb B is id 3 */
    if (argc != 2)
        fprintf(stderr, "usage: block INI_FILE\n");
    else if (block == NULL || cfa_block_load_ini(block, argv[1], CFA_INI_STRICT) != CFA_OK ||
             cfa_block_set(block, "reg_img_bayerid", 3) != CFA_OK ||
             cfa_block_run(block, WIDTH, HEIGHT, &raw[0][0], 0, &out, NULL, NULL) != CFA_OK)
        fprintf(stderr, "block: %s\n", cfa_block_error(block));
    else {
        printf("red %d at a red site, green %d at a green site\n", rgb[20][30][0], rgb[20][31][1]);
        status = rgb[20][30][0] == 1500 && rgb[20][31][1] == 1000 ? 0 : 1;
    }
    cfa_block_delete(block);
    return status;
}
