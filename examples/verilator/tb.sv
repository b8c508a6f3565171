// A testbench around a DUT with streams of pixels: a driver and a sink with random gaps, and a scoreboard that holds every
// row of the five outputs against the model and stops at the first difference.
//   +record=FILE   the mosaic of a recorded picture, as in stub_dut.sv; without it a random one
//   +width=N +height=N   its size, 64 x 48 without
//   +ini=FILE      registers as the tool takes them, or +strict_ini=FILE, each line of which must be right; without
//                  either the block is disabled, as the stub is
//   +bits=N        how many low bits of the outputs are held, 16 without: files of 8 bits have no more
`timescale 1ns / 1ps
module tb #(
    parameter int WIDTH  = 256,    // the widest picture
    parameter int PIXELS = 65536   // the largest
);
  import cfa_dpi_pkg::*;

  logic clk = 0, rst_n = 0, in_valid = 0, out_ready = 0;
  logic in_ready, out_valid;
  logic [15:0] in_data = 0;
  logic [4:0][15:0] out_data;
  stub_dut #(.PIXELS(PIXELS)) dut (.*);
  initial forever #5 clk = !clk;

  // ---- the model runs first, for the mosaic is known; a passive testbench puts the rows that its monitor has seen
  cfa_model #(WIDTH) model;
  logic [5:0][15:0] record [PIXELS];
  shortint unsigned row [WIDTH];
  int width = 64, height = 48, bits = 16;
  initial begin
    string file;
    model = new;
    void'($value$plusargs("width=%d", width));
    void'($value$plusargs("height=%d", height));
    void'($value$plusargs("bits=%d", bits));
    if (width > WIDTH || width * height > PIXELS) $fatal(1, "FAILED: %0d x %0d is too large", width, height);
    if ($value$plusargs("strict_ini=%s", file) != 0) model.load(file, 1);
    else if ($value$plusargs("ini=%s", file) != 0) model.load(file);
    else model.set("reg_cfa_enable", 0);
    for (int i = 0; i < PIXELS; i++) record[i][5] = 16'($urandom_range(4095));
    if ($value$plusargs("record=%s", file) != 0) $readmemh(file, record);
    model.begin_frame(width, height);
    for (int y = 0; y < height; y++) begin
      for (int x = 0; x < width; x++) row[x] = record[y*width+x][5];
      model.put_row(y, row);
    end
    model.run();
    #22 rst_n = 1;
  end

  // ---- the driver: data stay while they are valid and nobody is ready
  int sent = 0;
  always @(posedge clk)
    if (rst_n) begin
      out_ready <= $urandom_range(3) != 0;
      if (!in_valid || in_ready) begin
        in_valid <= 0;
        if (sent < width * height && $urandom_range(3) != 0) begin
          in_valid <= 1;
          in_data  <= record[sent][5];
          sent     <= sent + 1;
        end
      end
    end

  // ---- the scoreboard
  int y = 0, x = 0;
  /* verilator lint_off UNDRIVEN */   // get_row drives it, through its output argument
  shortint unsigned want [5][WIDTH];  // the model's row of each output
  /* verilator lint_on UNDRIVEN */
  task automatic compare(cfa_output_e channel);
    if (x == 0) model.get_row(channel, y, want[channel]);
    if ((out_data[channel] ^ want[channel][x]) << (16 - bits) !== 16'd0)   // an unknown bit differs, too
      $fatal(1, "FAILED: row %0d, column %0d, %s: got %0d, want %0d", y, x, channel.name(), out_data[channel],
             want[channel][x]);
  endtask

  always @(posedge clk)
    if (rst_n && out_valid && out_ready) begin
      for (int k = 0; k < 5; k++) compare(cfa_output_e'(k));
      x <= x == width - 1 ? 0 : x + 1;
      if (x == width - 1) y <= y + 1;
      if (x == width - 1 && y == height - 1) begin
        $display("PASSED: %0d rows of %0d pixels, five outputs each", height, width);
        $finish;
      end
    end

  initial begin   // a pixel takes two cycles, not ten
    repeat (10 * width * height + 100) @(posedge clk);
    $fatal(1, "FAILED: no end; row %0d, column %0d has not come", y, x);
  end
endmodule
