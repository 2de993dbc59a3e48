module m;
always @(posedge clk)
begin
	q <= 1;
end
endmodule
