module one;
  reg one_hot; // One
endmodule
