entity Top is -- Entity
  Port (A : in Bit := 'X');
END;
