library ieee;
use ieee.std_logic_1164.all;
entity e is
  port (
    a : in  std_logic;
    b : out std_logic
  );
end entity e;
architecture rtl of e is
  attribute keep of rtl : architecture is "true";
  function f (a : bit) return bit;
  type t is record
    x : bit;
  end record;
begin
  u : entity work.sub
    port map (
      a => a
    );
  p : process (clk)
    variable v : bit;
  begin
    if rst = '1' then
      q <= '0';
    elsif rising_edge(clk) then
      case s is
        when idle =>
          q <= '1';
        when others =>
          null;
      end case;
    end if;
    wait for 10 ns;
    for i in 0 to 7 loop
      if v then x; end if;
      y;
    end loop;
  end process p;
end architecture rtl;
