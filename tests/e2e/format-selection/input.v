module m;
 wire a;
 wire b;
endmodule
