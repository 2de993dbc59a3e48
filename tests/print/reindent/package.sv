package p;
  typedef enum logic [1:0] {
    IDLE,
    RUN
  } state_t;
  import "DPI-C" function int f(int a);
  virtual class base extends other;
    virtual interface bus vif;
    extern function new(string name);
    pure virtual task run();
    virtual task stop();
      x = 1;
    endtask : stop
    constraint c {
      a < b;
    }
  endclass
endpackage
module m;
  always_ff @(posedge clk)
    unique case (s)
      A, B:
        if (x)
          y <= 1;
        else
          y <= 2;
      C: begin
        y <= 3;
      end
      default: ;
    endcase
  a1: assert property (p);
  property p;
    @(posedge clk) a |-> b;
  endproperty
  assign z = a ? b :
    c;
`ifdef X
  wire w;
`endif
endmodule
