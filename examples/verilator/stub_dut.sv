// A stand-in for the block's RTL, one register deep: the disabled block (red, green and blue are the mosaic, DC is 0, the
// gain 1024), or what a recorded picture says.
//   +record=FILE   a picture for $readmemh, a pixel a line: mosaic, red, green, blue, DC, gain, four digits each
//   +fault=N       pixel N has the lowest bit of an output wrong: red, green, blue, DC, gain for N % 5 from 0 to 4
`timescale 1ns / 1ps
module stub_dut #(
    parameter int PIXELS = 0
) (
    input  logic             clk,
    input  logic             rst_n,
    input  logic             in_valid,
    output logic             in_ready,
    input  logic [15:0]      in_data,
    output logic             out_valid,
    input  logic             out_ready,
    output logic [4:0][15:0] out_data    // by cfa_output_e
);
  logic [5:0][15:0] record [PIXELS];
  string file = "";
  int fault = -1, index = 0;
  logic [4:0][15:0] result;

  initial begin
    void'($value$plusargs("fault=%d", fault));
    if ($value$plusargs("record=%s", file) != 0) $readmemh(file, record);
  end

  always_comb begin
    result = {16'd1024, 16'd0, {3{in_data}}};
    if (file != "") for (int k = 0; k < 5; k++) result[k] = record[index][4-k];
    if (index == fault) result[fault%5][0] = !result[fault%5][0];
  end

  assign in_ready = !out_valid || out_ready;
  always_ff @(posedge clk)
    if (!rst_n) out_valid <= 0;
    else if (in_ready) begin
      out_valid <= in_valid;
      out_data  <= result;
      if (in_valid) index <= index + 1;
    end
endmodule
