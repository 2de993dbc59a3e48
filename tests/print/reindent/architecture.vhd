entity e
is
end e;
architecture a of e is
  component c
    port (x : in bit);
  end component;
  function f return integer;
  attribute k of a : architecture is "y";
begin
  l :
    process
    begin
      v <= w;
    end process;
  g : if W > 1 generate
    u : entity work.c
      port map (x => y);
  elsif W = 0 generate
    v <= x;
  else generate
    v <= y when z else
      w;
  end generate g;
  process
  begin
    wait for 1 ns;
    if a = b
      and c = d
    then
      x := 1;
    end if;
    assert false report "x" & integer'image(i)
      severity error;
  end process;
end a;
