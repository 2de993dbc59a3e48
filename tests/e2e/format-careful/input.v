module m;
always @(posedge clk) begin // begin
if (a)
q <= "end";
else begin
q <= 1; end
end
endmodule
