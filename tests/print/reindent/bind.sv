module bind_check;

  bind esc_tb
    esc_check #(.Width(6))
    esc_check (
      .clk_i ,
      .rst_ni,
      .resp_i,
      .err_i ,
      .ping_i,
      .ok_o  ,
      .fail_o,
      .wait_o,
      .stop_o,
      .esc_o
    );

endmodule
