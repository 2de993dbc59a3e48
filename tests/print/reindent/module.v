`timescale 1ns/1ps
// begin is no block in a comment
module m #(
  parameter W = 8
) (
  input  wire clk,
  output reg  q
);
  wire a = "begin";
  assign b = a &
    c;
  always @(posedge clk)
    if (a) begin
      q <= 1;
    end else begin
      q <= 0;
    end
  always @*
    if (a)
      x = 1;
    else
      x = 2;
  always @(posedge clk) begin : name
    case (s)
      A: q <= 0;
      B: begin
        q <= 1;
      end
      default: q <= 2;
    endcase
  end
  function f(input i); begin f = i; end endfunction
  initial begin
    wait fork;
    fork
      t;
    join
  end
  /* a block
     comment */
  genvar i;
  generate
    for (i = 0; i < 4; i = i + 1) begin : g
      sub u (.a(a),
        .b(b));
    end
  endgenerate
endmodule
module n;
endmodule
