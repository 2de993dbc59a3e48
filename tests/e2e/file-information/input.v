module m; // top
  // all comment
  wire w;

  /* block
  still */
endmodule
