module M; endmodule
