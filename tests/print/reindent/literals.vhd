architecture a of e is
  constant lp : character := '(';
begin
  p : process
  begin
    if (grp = "()") or                  -- empty group
       (grp(grp'left) /= '(') or        -- no valid group
       (bit'('1') = ')') then
      v := 1;
    elsif ((addr = '1') and (wren = '1')) or
          ((addr = '0') and (wren = '1')) then
      x <= '1';
    end if;
    case csr is
      when mstatus | mie |
           mtvec   | mip =>
        valid <= '1';
      when others =>
        valid <= '0';
    end case;
  end process;

  x <= a when c1 else
       b when c2 else
       c when (sel = '0') else d;

  fixture : block is
  begin
    dut : component dff
      generic map(
        width => width
      )
      port map(
        clk => clk
      );
  end block;

  u1 : entity work.fifo
    generic map(
      width => width
    );
end architecture;
