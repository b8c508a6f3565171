// How fast rows pass through DPI under Verilator: frames of which the testbench writes every sample and reads it again
// from the outputs of the disabled block. Processor time; the block's run is left out.
`timescale 1ns / 1ps
module dpi_rows;
  import cfa_dpi_pkg::*;
  localparam int W = 1920, H = 1080, FRAMES = 20;
  localparam longint SAMPLES = longint'(W) * H * FRAMES;   // of each output

  cfa_model #(W) model;
  shortint unsigned row [W];
  longint start, put_time = 0, get_time = 0, put_sum = 0, get_sum = 0;

  initial begin
    model = new;
    model.set("reg_cfa_enable", 0);
    for (int frame = 0; frame < FRAMES; frame++) begin
      start = $c64("std::clock()");   // microseconds
      model.begin_frame(W, H);
      for (int y = 0; y < H; y++) begin
        for (int x = 0; x < W; x++) begin
          row[x] = 16'((x + y) & 4095);
          put_sum += longint'(row[x]);
        end
        model.put_row(y, row);
      end
      put_time += $c64("std::clock()") - start;
      model.run();
      start = $c64("std::clock()");
      for (int y = 0; y < H; y++)
        for (int k = 0; k < 5; k++) begin
          model.get_row(cfa_output_e'(k), y, row);
          for (int x = 0; x < W; x++) get_sum += longint'(row[x]);
        end
      get_time += $c64("std::clock()") - start;
    end
    if (get_sum != 3 * put_sum + 1024 * SAMPLES) $fatal(1, "dpi_rows: other samples than were put");
    $display("put_row: %0d million samples a second", SAMPLES / put_time);
    $display("get_row: %0d million samples a second", 5 * SAMPLES / get_time);
    $finish;
  end
endmodule
