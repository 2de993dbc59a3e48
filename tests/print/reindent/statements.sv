module top
  #(parameter A = 1,
    parameter B = 2)
   (
   input wire clk,
   output wire q);
  assign v = (q == F) |
             (q == L &
             (o == M |
              o == N));
  `ifdef SIM
    assign b = a;
    always_comb
      c = a;
  `else
    assign b = !a;
  `endif
  assign d = b;
endmodule

module n import p::*;
#(
  parameter int A = 1
 ) (
  output logic q
);
  assign q = 1;
endmodule

class c;
  `object_param_utils_begin(c#(T))
    `field_int(a, DEFAULT)
  `object_utils_end

  constraint x_c {
    if (((opcode == 1) && (f inside {1})) ||
        (opcode inside {2})) {
      has == 1'b1;
    }
  }
  constraint y_c {
  `ifndef SIM
    all.sum() == count;
  `else
    if (n > 0) {
      all inside {[1:count]};
    }
  `endif
  }

  function bit f(int a);
    if (m == null) `fatal(name(), "no memory model")
    `info(`gfn, "x", LOW)
    if (a == 1) begin
      return 0;
    end begin
      return 1'b0;
    end
  endfunction

  virtual task drive();
    if (blocking) wait fork;
    `SPINWAIT_EXIT(
        do @(`CB); while (!`CB.ack);
        if (cfg.x) begin
          a = 1;
        end else begin
          a = 0;
        end
        wait (cfg.in_reset);)
    if (x) disable fork;
  endtask

  task automatic unknown_words();
    foreach (a[i]) strange case of;
      b = 1;
  endtask

  task automatic u();
    b = 1;
  endtask
endclass
