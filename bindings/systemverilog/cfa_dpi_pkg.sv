// The block's model for SystemVerilog testbenches, by plain DPI-C: compile this file and cfa_dpi.c, link libcfa_block.
//
//     cfa_model #(WIDTH) model = new;                  // rows are shortint unsigned row [WIDTH]
//     model.set("reg_img_bayerid", 3);
//     model.begin_frame(WIDTH, HEIGHT);
//     for (int y = 0; y < HEIGHT; y++) model.put_row(y, mosaic[y]);
//     model.run();
//     model.get_row(CFA_GREEN, y, want);
`timescale 1ns / 1ps
package cfa_dpi_pkg;

  // The outputs of a frame.
  typedef enum int {CFA_RED, CFA_GREEN, CFA_BLUE, CFA_DC, CFA_GAIN} cfa_output_e;   // a gain of 1.0 is 1024

  // What the class below is made of. Each int is 0, or negative (CFA_ERROR_... of cfa_block.h) with a line in
  // cfa_dpi_error; a call that fails changes nothing else. Rows are at least as long as the frame is wide; the elements
  // behind it stay as they are. They are shortint and int, which C sees as they are.
  import "DPI-C" function chandle cfa_dpi_new();
  import "DPI-C" function void cfa_dpi_delete(input chandle model);
  import "DPI-C" function string cfa_dpi_error(input chandle model);
  import "DPI-C" function int cfa_dpi_set(input chandle model, input string key, input longint value);
  import "DPI-C" function int cfa_dpi_get(input chandle model, input string key, inout int value);
  import "DPI-C" function int cfa_dpi_load_ini(input chandle model, input string path, input int strict);
  import "DPI-C" function int cfa_dpi_keep_planes(input chandle model, input string names);
  import "DPI-C" function int cfa_dpi_begin(input chandle model, input int width, input int height);
  import "DPI-C" function int cfa_dpi_put_row(input chandle model, input int y, input shortint unsigned row []);
  import "DPI-C" function int cfa_dpi_run(input chandle model);
  import "DPI-C" function int cfa_dpi_get_row(input chandle model, input int which, input int y,
                                              inout shortint unsigned row []);
  import "DPI-C" function int cfa_dpi_get_plane_row(input chandle model, input string name, input int channel,
                                                    input int y, inout int row []);

  // A model with registers of its own. What fails ends the simulation with the reason. WIDTH is that of the row arrays;
  // a frame may be narrower, and what is got behind it is undefined.
  /* verilator lint_off DECLFILENAME */   // a class of this package needs no file of its own
  class cfa_model #(int WIDTH = 4096);
    chandle handle;

    function new();
      handle = cfa_dpi_new();
      if (handle == null) $fatal(1, "cfa_model: not enough memory");
    endfunction

    // Where many models come and go: a chandle has no destructor.
    function void free();
      cfa_dpi_delete(handle);
      handle = null;
    endfunction

    function void check(int status);
      if (status != 0) $fatal(1, "cfa_model: %s", cfa_dpi_error(handle));
    endfunction

    // A register by the key it has in INI files.
    function void set(string key, longint value);
      check(cfa_dpi_set(handle, key, value));
    endfunction

    function int get(string key);
      int value = 0;
      check(cfa_dpi_get(handle, key, value));
      return value;
    endfunction

    // Values as the command-line tool takes them; strict refuses what it would ignore or cut.
    function void load(string path, bit strict = 0);
      check(cfa_dpi_load_ini(handle, path, int'(strict)));
    endfunction

    // Names with commas between, "*" for all: the runs that follow keep these planes, and are slower for it.
    function void keep_planes(string names);
      check(cfa_dpi_keep_planes(handle, names));
    endfunction

    function void begin_frame(int width, int height);
      check(cfa_dpi_begin(handle, width, height));
    endfunction

    // Rows from 0 on, none left out.
    function void put_row(int y, shortint unsigned row [WIDTH]);
      check(cfa_dpi_put_row(handle, y, row));
    endfunction

    function void run();
      check(cfa_dpi_run(handle));
    endfunction

    function void get_row(cfa_output_e which, int y, output shortint unsigned row [WIDTH]);
      check(cfa_dpi_get_row(handle, int'(which), y, row));
    endfunction

    // A plane between the stages, signed as its stage made it. Channel 0 to 2: red, green, blue.
    function void get_plane_row(string name, int channel, int y, output int row [WIDTH]);
      check(cfa_dpi_get_plane_row(handle, name, channel, y, row));
    endfunction
  endclass
  /* verilator lint_on DECLFILENAME */

endpackage
