------------------------------------------------------------------------
-- File    : sample1.vhd
-- Purpose : A servo controller: pulse width modulation with a ramp that
--           limits the speed, a small state machine, a test bench.
--
-- Try in the editor: F5 and F6 on a word such as in or std_logic,
-- SHIFT-F1 on the word proc, and Custom, Analyse.
------------------------------------------------------------------------
library ieee;
use ieee.std_logic_1164.all;
use ieee.numeric_std.all;

package servo_pkg is

  constant POSITION_BITS : positive := 8;

  subtype position_t is unsigned(POSITION_BITS - 1 downto 0);

  type command_t is record
    target : position_t;
    speed  : natural range 0 to 15;      -- steps for each frame; 0 = at once
  end record command_t;

  constant COMMAND_NONE : command_t := (target => to_unsigned(128, POSITION_BITS), speed => 0);

  -- The next position on the way from one place to another.
  function approach(
    present : position_t;
    command : command_t) return position_t;

end package servo_pkg;

package body servo_pkg is

  function approach(
    present : position_t;
    command : command_t) return position_t is
    variable distance : integer;
  begin
    distance := to_integer(command.target) - to_integer(present);
    if command.speed = 0 or abs distance <= command.speed then
      return command.target;
    elsif distance > 0 then
      return present + command.speed;
    else
      return present - command.speed;
    end if;
  end function approach;

end package body servo_pkg;

------------------------------------------------------------------------
-- Pulse width modulation: one pulse for each frame of FRAME ticks.
------------------------------------------------------------------------
library ieee;
use ieee.std_logic_1164.all;
use ieee.numeric_std.all;
use work.servo_pkg.all;

entity pwm is
  generic (
    FRAME   : positive := 5000;
    MINIMUM : positive := 250
  );
  port (
    clk      : in  std_logic;
    rst_n    : in  std_logic;
    tick     : in  std_logic;
    position : in  position_t;
    pulse    : out std_logic;
    start    : out std_logic              -- high for one clock at each frame's start
  );
end entity pwm;

architecture rtl of pwm is
  signal count : natural range 0 to FRAME - 1;
  signal width : natural range 0 to FRAME - 1;
begin

  width <= MINIMUM + to_integer(position);

  p_count : process (clk, rst_n)
  begin
    if rst_n = '0' then
      count <= 0;
      pulse <= '0';
      start <= '0';
    elsif rising_edge(clk) then
      start <= '0';
      if tick = '1' then
        if count = FRAME - 1 then
          count <= 0;
          start <= '1';
        else
          count <= count + 1;
        end if;
        if count < width then
          pulse <= '1';
        else
          pulse <= '0';
        end if;
      end if;
    end if;
  end process p_count;

end architecture rtl;

------------------------------------------------------------------------
-- The controller: takes a command, moves frame by frame, says when done.
------------------------------------------------------------------------
library ieee;
use ieee.std_logic_1164.all;
use ieee.numeric_std.all;
use work.servo_pkg.all;

entity servo is
  generic (
    DIVIDER : positive := 50;             -- clocks for each tick
    FRAME   : positive := 5000
  );
  port (
    clk     : in  std_logic;
    rst_n   : in  std_logic;
    command : in  command_t;
    load    : in  std_logic;
    busy    : out std_logic;
    done    : out std_logic;
    pulse   : out std_logic
  );
end entity servo;

architecture rtl of servo is

  type state_t is (idle, moving, settle);

  signal state    : state_t;
  signal kept     : command_t;
  signal position : position_t;
  signal tick     : std_logic;
  signal start    : std_logic;
  signal divide   : natural range 0 to DIVIDER - 1;
  signal frames   : natural range 0 to 3;

begin

  p_tick : process (clk, rst_n)
  begin
    if rst_n = '0' then
      divide <= 0;
      tick   <= '0';
    elsif rising_edge(clk) then
      tick <= '0';
      if divide = DIVIDER - 1 then
        divide <= 0;
        tick   <= '1';
      else
        divide <= divide + 1;
      end if;
    end if;
  end process p_tick;

  u_pwm : entity work.pwm
    generic map (
      FRAME => FRAME
    )
    port map (
      clk      => clk,
      rst_n    => rst_n,
      tick     => tick,
      position => position,
      pulse    => pulse,
      start    => start
    );

  p_state : process (clk, rst_n)
  begin
    if rst_n = '0' then
      state    <= idle;
      kept     <= COMMAND_NONE;
      position <= COMMAND_NONE.target;
      frames   <= 0;
      done     <= '0';
    elsif rising_edge(clk) then
      done <= '0';
      case state is
        when idle =>
          if load = '1' then
            kept  <= command;
            state <= moving;
          end if;

        when moving =>
          if start = '1' then
            position <= approach(position, kept);
            if approach(position, kept) = kept.target then
              frames <= 0;
              state  <= settle;
            end if;
          end if;

        when settle =>                    -- three frames at the new place
          if start = '1' then
            if frames = 3 then
              done  <= '1';
              state <= idle;
            else
              frames <= frames + 1;
            end if;
          end if;
      end case;
    end if;
  end process p_state;

  busy <= '0' when state = idle else '1';

end architecture rtl;

------------------------------------------------------------------------
-- Test bench
------------------------------------------------------------------------
library ieee;
use ieee.std_logic_1164.all;
use ieee.numeric_std.all;
use work.servo_pkg.all;

entity tb_servo is
end entity tb_servo;

architecture sim of tb_servo is

  constant PERIOD : time := 20 ns;

  signal clk     : std_logic := '0';
  signal rst_n   : std_logic := '0';
  signal command : command_t := COMMAND_NONE;
  signal load    : std_logic := '0';
  signal busy    : std_logic;
  signal done    : std_logic;
  signal pulse   : std_logic;
  signal stop    : boolean := false;

  type commands_t is array (natural range <>) of command_t;

  constant COMMANDS : commands_t := (
    (target => x"FF", speed => 0),
    (target => x"00", speed => 15),
    (target => x"80", speed => 8)
  );

begin

  clk <= not clk after PERIOD / 2 when not stop;

  dut : entity work.servo
    generic map (
      DIVIDER => 2,
      FRAME   => 600
    )
    port map (
      clk     => clk,
      rst_n   => rst_n,
      command => command,
      load    => load,
      busy    => busy,
      done    => done,
      pulse   => pulse
    );

  p_stimulus : process
  begin
    wait for 5 * PERIOD;
    rst_n <= '1';
    for i in COMMANDS'range loop
      wait until falling_edge(clk);
      command <= COMMANDS(i);
      load    <= '1';
      wait until falling_edge(clk);
      load    <= '0';
      wait until done = '1' for 10 ms;
      assert done = '1'
        report "command " & integer'image(i) & " did not end"
        severity failure;
      report "command " & integer'image(i) & " done";
    end loop;
    stop <= true;
    wait;
  end process p_stimulus;

  -- A pulse is never shorter than the minimum.
  p_check : process
    variable rise : time;
  begin
    wait until rising_edge(pulse);
    rise := now;
    wait until falling_edge(pulse);
    assert now - rise >= 250 * 2 * PERIOD
      report "pulse too short: " & time'image(now - rise)
      severity error;
  end process p_check;

end architecture sim;
