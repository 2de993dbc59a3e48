module m; wire a; // b
endmodule
