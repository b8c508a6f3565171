// The imports of cfa_dpi_pkg: what they refuse, planes, rows of other lengths and directions. dpi_test runs it.
//   +fatal=N   the N-th wrong call through the class, which must end the simulation
`timescale 1ns / 1ps
module dpi_test;
  import cfa_dpi_pkg::*;
  localparam int W = 12, H = 8;

  int failures = 0, n = -1, value = 7, file;
  /* verilator lint_off UNDRIVEN */   // output arguments drive them
  shortint unsigned row [W], long_row [W+3], falling [W-1:0], short_row [W-1];
  int plane [W];
  /* verilator lint_on UNDRIVEN */
  cfa_model #(W) model;

  function automatic void expect_value(string what, int got, int want);
    if (got == want) return;
    $display("FAILED: %s: got %0d, want %0d", what, got, want);
    failures++;
  endfunction

  function automatic void refused(int status, int code, string line);
    if (status == code && cfa_dpi_error(model.handle) == line) return;
    $display("FAILED: got %0d '%s', want %0d '%s'", status, cfa_dpi_error(model.handle), code, line);
    failures++;
  endfunction

  // R G / G B of 100, 200, 300, with 900 at the red site of row 4, column 6.
  function automatic int site(int y, int x);
    return y == 4 && x == 6 ? 900 : 100 * (1 + y % 2 + x % 2);
  endfunction

  function automatic void put_frame();
    model.begin_frame(W, H);
    for (int y = 0; y < H; y++) begin
      for (int x = 0; x < W; x++) row[x] = 16'(site(y, x));
      model.put_row(y, row);
    end
  endfunction

  function automatic void wrong_calls();
    chandle h = model.handle;
    refused(cfa_dpi_set(h, "reg_cfa_edge_tol", 64'd4294967296), -3, "reg_cfa_edge_tol: 4294967296 is not 0 to 4095");
    refused(cfa_dpi_set(h, "reg_cfa_edge", 1), -2, "no register 'reg_cfa_edge'");
    refused(cfa_dpi_get(h, "", value), -2, "no register ''");
    expect_value("a register that is not there", value, 7);
    refused(cfa_dpi_load_ini(h, "/no/such.ini", 0), -5, "/no/such.ini: No such file or directory");
    file = $fopen("unknown.ini", "w");
    $fdisplay(file, "[cfa]\nreg_cfa_edge_to = 1");
    $fclose(file);
    refused(cfa_dpi_load_ini(h, "unknown.ini", 1), -4, "unknown.ini:2: no register 'reg_cfa_edge_to' in [cfa]");
    expect_value("unknown.ini", cfa_dpi_load_ini(h, "unknown.ini", 0), 0);
    refused(cfa_dpi_keep_planes(h, "GH,G"), -8, "no plane 'G'");
    refused(cfa_dpi_put_row(h, 0, row), -1, "put_row: row 0, where the frame is full or none has begun");
    refused(cfa_dpi_run(h), -1, "run: 0 of 0 rows are there");
    refused(cfa_dpi_begin(h, 65536, 1), -6, "begin: 65536 x 1, where both are 1 to 65535");
    refused(cfa_dpi_begin(h, 1, 0), -6, "begin: 1 x 0, where both are 1 to 65535");
    model.begin_frame(W, H);
    refused(cfa_dpi_put_row(h, 1, row), -1, "put_row: row 1, where row 0 is next");
    refused(cfa_dpi_put_row(h, 0, short_row), -1, "put_row: an array of 11 for a row of 12");
    model.put_row(0, row);
    refused(cfa_dpi_put_row(h, 0, row), -1, "put_row: row 0, where row 1 is next");
    refused(cfa_dpi_run(h), -1, "run: 1 of 8 rows are there");
    put_frame();
    refused(cfa_dpi_put_row(h, 8, row), -1, "put_row: row 8, where the frame is full or none has begun");
    refused(cfa_dpi_get_row(h, 0, 0, row), -1, "get_row: no frame has run");
    refused(cfa_dpi_get_plane_row(h, "GH_hp", 0, 0, plane), -8, "get_plane_row: no plane 'GH_hp' was kept");
    model.keep_planes("GH_hp,MaxRGB");
    model.run();
    refused(cfa_dpi_get_row(h, 5, 0, row), -1, "get_row: no row 0 of output 5");
    refused(cfa_dpi_get_row(h, -1, 0, row), -1, "get_row: no row 0 of output -1");
    refused(cfa_dpi_get_row(h, 0, 8, row), -1, "get_row: no row 8 of output 0");
    refused(cfa_dpi_get_row(h, 0, -1, row), -1, "get_row: no row -1 of output 0");
    refused(cfa_dpi_get_row(h, 0, 0, short_row), -1, "get_row: an array of 11 for a row of 12");
    refused(cfa_dpi_get_plane_row(h, "GH", 0, 0, plane), -8, "get_plane_row: no plane 'GH' was kept");
    refused(cfa_dpi_get_plane_row(h, "GH_hp", 1, 0, plane), -1, "get_plane_row: no row 0 of channel 1 in 'GH_hp'");
    refused(cfa_dpi_get_plane_row(h, "MaxRGB", 2, 8, plane), -1, "get_plane_row: no row 8 of channel 2 in 'MaxRGB'");
    refused(cfa_dpi_set(h, "reg_img_bayerid", 16), -3, "reg_img_bayerid: 16 is not 0 to 15");   // the block's line again
    expect_value("no model", cfa_dpi_run(null) + cfa_dpi_set(null, "", 0) + cfa_dpi_put_row(null, 0, row)
                 + cfa_dpi_get_row(null, 0, 0, row), -4);
    model.begin_frame(3, 3);
    refused(cfa_dpi_get_row(h, 0, 0, row), -1, "get_row: no frame has run");
    for (int y = 0; y < 3; y++) model.put_row(y, row);
    refused(cfa_dpi_run(h), -6, "Picture of 3 x 3 is too small: the enabled block takes 4 x 3 and larger");
    refused(cfa_dpi_get_row(h, 0, 0, row), -1, "get_row: no frame has run");
  endfunction

  // Own colour minus its neighbours along the row, and the maximum of each colour.
  function automatic void planes();
    put_frame();
    model.run();
    for (int y = 0; y < H; y++) begin
      model.get_plane_row("GH_hp", 0, y, plane);
      for (int x = 0; x < W; x++)
        expect_value($sformatf("GH_hp %0d, %0d", y, x), plane[x], y != 4 ? 0 : x == 6 ? 400 : x == 4 || x == 8 ? -200 : 0);
      for (int c = 0; c < 3; c++) begin
        model.get_plane_row("MaxRGB", c, y, plane);
        if (y == 4) expect_value($sformatf("MaxRGB %0d", c), plane[6], c == 0 ? 900 : 100 * (c + 1));
      end
    end
  endfunction

  // The mosaic through the disabled block.
  function automatic void other_arrays();
    model.set("reg_cfa_enable", 0);
    model.begin_frame(W, 1);
    for (int x = 0; x < W; x++) falling[x] = 16'(7 * x);
    model.check(cfa_dpi_put_row(model.handle, 0, falling));
    model.run();
    for (int x = 0; x < W + 3; x++) long_row[x] = 9;
    model.check(cfa_dpi_get_row(model.handle, 2, 0, long_row));
    for (int x = 0; x < W + 3; x++) expect_value("long_row", int'(long_row[x]), x < W ? 7 * x : 9);
    falling[5] = 0;
    model.check(cfa_dpi_get_row(model.handle, 0, 0, falling));
    for (int x = 0; x < W; x++) expect_value("falling", int'(falling[x]), 7 * x);
  endfunction

  initial begin
    model = new;
    if ($value$plusargs("fatal=%d", n) != 0)
      case (n)
        0: model.set("reg_cfa_edge", 1);
        1: void'(model.get("reg_cfa_edge"));
        2: model.load("/no/such.ini");
        3: model.keep_planes("G");
        4: model.begin_frame(0, 1);
        5: model.put_row(3, row);
        6: model.run();
        7: model.get_row(CFA_GAIN, 2, row);
        8: model.get_plane_row("GH", 0, 1, plane);
      endcase
    else begin
      model.set("reg_img_bayerid", 3);
      expect_value("reg_img_bayerid", model.get("reg_img_bayerid"), 3);
      wrong_calls();
      planes();
      other_arrays();
      model.free();
    end
    if (failures == 0) $display("PASSED");
    $finish;
  end
endmodule
