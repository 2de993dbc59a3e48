architecture rtl of e is
  signal a : std_logic;   -- one
                          -- and more
begin
  gen:
  if W > 1 generate
    a <= b;
  end generate;

  process (clk) is
  begin
    -- what is to be done
    case state is
      -- nothing yet
      when idle =>
        x <= 1;
      -- at work
      when busy =>
        if a = '1' and
           b = '0' then
          x <= 2;
        -- otherwise
        else
          x <= 3;
        -- done
        end if;
    end case;
    -- the end
  end process;
end architecture;
