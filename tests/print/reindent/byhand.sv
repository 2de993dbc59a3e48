module m
  import p::*;
#(
  parameter int W = 4
) (
  input  logic clk,   // a clock
                      // of this width
  output logic q
);
  typedef enum logic [1:0] {
    IDLE,
    BUSY
  } state_e;

  initial begin : gen
    #(D * 1ps);
    q = 1'b0;
  end

  assign q = sel ? b :
             c;
  assign r = sel ? b :
    c;

  always_comb
    case (sel)
      A,
      B: x = 1;
      2'd1, 2'd2,
      2'd3: x = 2;
      default: x = 0;
    endcase

  `ASSERT(KnownOut,
          !$isunknown(q))
  assign z = 1;
`ifdef FAST
  `define STEP 1
  assign y = 1;
`else
  `define STEP 2
  assign y = 2;
`endif
  class c;
    constraint a { x < 5; }
    constraint b {
      y > 3;
    }
    constraint d { y inside {1, 2}; }
    rand int k;
  endclass
  covergroup g @(posedge clk);
    coverpoint a {
      bins lo = {[0:3]};
      bins hi = {4};
    }
    coverpoint b { bins all = {1}; }
    cross a, b;
  endgroup
endmodule

`ifdef SIMULATION
module top;
  bit clk;
`else
module top (input clk);
`endif
  always @(posedge clk) begin
    tick();
  end
endmodule
