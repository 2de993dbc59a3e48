//----------------------------------------------------------------------
// File    : sample.v
// Purpose : A serial port (8 data bits, no parity, one stop bit) with
//           receive and transmit queues, and a test bench that sends
//           every byte through a loop-back.
//
// Try in the editor: F5 and F6 on a word such as posedge or reg,
// SHIFT-F1 on the word alw, and Custom, Compile.
//----------------------------------------------------------------------
`timescale 1ns / 1ps
`default_nettype none

//==== Baud rate ========================================================

// Divides the clock to OVERSAMPLE ticks for each bit.
module baud_gen #(
  parameter integer CLOCK_HZ   = 50_000_000,
  parameter integer BAUD       = 115_200,
  parameter integer OVERSAMPLE = 16
) (
  input  wire clk,
  input  wire rst_n,
  output reg  tick
);

  localparam integer DIVISOR = (CLOCK_HZ + (BAUD * OVERSAMPLE) / 2) / (BAUD * OVERSAMPLE);
  localparam integer WIDTH   = $clog2(DIVISOR + 1);

  reg [WIDTH-1:0] count;

  always @(posedge clk or negedge rst_n)
    if (!rst_n) begin
      count <= 0;
      tick  <= 1'b0;
    end else if (count == DIVISOR - 1) begin
      count <= 0;
      tick  <= 1'b1;
    end else begin
      count <= count + 1'b1;
      tick  <= 1'b0;
    end

endmodule

//==== Transmitter ======================================================

module uart_tx #(
  parameter integer OVERSAMPLE = 16
) (
  input  wire       clk,
  input  wire       rst_n,
  input  wire       tick,
  input  wire       valid,
  input  wire [7:0] data,
  output wire       ready,
  output reg        txd
);

  localparam [1:0] IDLE  = 2'd0,
                   START = 2'd1,
                   SHIFT = 2'd2,
                   STOP  = 2'd3;

  reg [1:0] state;
  reg [7:0] shift;
  reg [2:0] index;
  reg [3:0] phase;

  assign ready = (state == IDLE);

  wire last_phase = (phase == OVERSAMPLE - 1);

  always @(posedge clk or negedge rst_n)
    if (!rst_n) begin
      state <= IDLE;
      shift <= 8'h00;
      index <= 3'd0;
      phase <= 4'd0;
      txd   <= 1'b1;
    end else begin
      case (state)
        IDLE: begin
          txd <= 1'b1;
          if (valid) begin
            shift <= data;
            phase <= 4'd0;
            state <= START;
          end
        end

        START: begin
          txd <= 1'b0;
          if (tick) begin
            phase <= phase + 1'b1;
            if (last_phase) begin
              index <= 3'd0;
              state <= SHIFT;
            end
          end
        end

        SHIFT: begin
          txd <= shift[0];                 // least significant bit first
          if (tick) begin
            phase <= phase + 1'b1;
            if (last_phase) begin
              shift <= {1'b0, shift[7:1]};
              index <= index + 1'b1;
              if (index == 3'd7) state <= STOP;
            end
          end
        end

        STOP: begin
          txd <= 1'b1;
          if (tick) begin
            phase <= phase + 1'b1;
            if (last_phase) state <= IDLE;
          end
        end
      endcase
    end

endmodule

//==== Receiver =========================================================

module uart_rx #(
  parameter integer OVERSAMPLE = 16
) (
  input  wire       clk,
  input  wire       rst_n,
  input  wire       tick,
  input  wire       rxd,
  output reg        valid,
  output reg  [7:0] data,
  output reg        frame_error
);

  localparam [1:0] IDLE  = 2'd0,
                   START = 2'd1,
                   SHIFT = 2'd2,
                   STOP  = 2'd3;

  // Two stages bring the line into the clock's domain.
  reg [1:0] sync;
  always @(posedge clk or negedge rst_n)
    if (!rst_n) sync <= 2'b11;
    else        sync <= {sync[0], rxd};

  wire line = sync[1];

  reg [1:0] state;
  reg [2:0] index;
  reg [3:0] phase;

  always @(posedge clk or negedge rst_n)
    if (!rst_n) begin
      state       <= IDLE;
      index       <= 3'd0;
      phase       <= 4'd0;
      data        <= 8'h00;
      valid       <= 1'b0;
      frame_error <= 1'b0;
    end else begin
      valid <= 1'b0;
      if (tick) begin
        phase <= phase + 1'b1;
        case (state)
          IDLE: begin
            phase <= 4'd0;
            if (!line) state <= START;
          end

          START:
            if (phase == OVERSAMPLE / 2 - 1) begin
              phase <= 4'd0;
              index <= 3'd0;
              state <= line ? IDLE : SHIFT;   // a glitch is no start bit
            end

          SHIFT:
            if (phase == OVERSAMPLE - 1) begin
              data  <= {line, data[7:1]};
              index <= index + 1'b1;
              if (index == 3'd7) state <= STOP;
            end

          STOP:
            if (phase == OVERSAMPLE - 1) begin
              valid       <= line;
              frame_error <= !line;
              state       <= IDLE;
            end
        endcase
      end
    end

endmodule

//==== Queue ============================================================

// First in, first out; one clock; DEPTH is a power of two.
module fifo #(
  parameter integer WIDTH = 8,
  parameter integer DEPTH = 16
) (
  input  wire             clk,
  input  wire             rst_n,
  input  wire             push,
  input  wire [WIDTH-1:0] din,
  input  wire             pop,
  output wire [WIDTH-1:0] dout,
  output wire             empty,
  output wire             full
);

  localparam integer BITS = $clog2(DEPTH);

  reg [WIDTH-1:0] memory [0:DEPTH-1];
  reg [BITS:0]    head, tail;

  assign empty = (head == tail);
  assign full  = (head[BITS-1:0] == tail[BITS-1:0]) && (head[BITS] != tail[BITS]);
  assign dout  = memory[tail[BITS-1:0]];

  always @(posedge clk or negedge rst_n)
    if (!rst_n) begin
      head <= 0;
      tail <= 0;
    end else begin
      if (push && !full) begin
        memory[head[BITS-1:0]] <= din;
        head <= head + 1'b1;
      end
      if (pop && !empty) tail <= tail + 1'b1;
    end

endmodule

//==== The port =========================================================

module uart #(
  parameter integer CLOCK_HZ = 50_000_000,
  parameter integer BAUD     = 115_200
) (
  input  wire       clk,
  input  wire       rst_n,
  // transmit side
  input  wire       tx_push,
  input  wire [7:0] tx_data,
  output wire       tx_full,
  // receive side
  input  wire       rx_pop,
  output wire [7:0] rx_data,
  output wire       rx_empty,
  output wire       frame_error,
  // pins
  input  wire       rxd,
  output wire       txd
);

  wire       tick;
  wire       tx_ready, tx_empty;
  wire [7:0] tx_byte;
  wire       rx_valid;
  wire [7:0] rx_byte;
  /* verilator lint_off UNUSED */
  wire       rx_full;
  /* verilator lint_on UNUSED */

  baud_gen #(
    .CLOCK_HZ (CLOCK_HZ),
    .BAUD     (BAUD)
  ) u_baud (
    .clk   (clk),
    .rst_n (rst_n),
    .tick  (tick)
  );

  fifo u_tx_fifo (
    .clk   (clk),
    .rst_n (rst_n),
    .push  (tx_push),
    .din   (tx_data),
    .pop   (tx_ready && !tx_empty),
    .dout  (tx_byte),
    .empty (tx_empty),
    .full  (tx_full)
  );

  uart_tx u_tx (
    .clk   (clk),
    .rst_n (rst_n),
    .tick  (tick),
    .valid (!tx_empty),
    .data  (tx_byte),
    .ready (tx_ready),
    .txd   (txd)
  );

  uart_rx u_rx (
    .clk         (clk),
    .rst_n       (rst_n),
    .tick        (tick),
    .rxd         (rxd),
    .valid       (rx_valid),
    .data        (rx_byte),
    .frame_error (frame_error)
  );

  fifo u_rx_fifo (
    .clk   (clk),
    .rst_n (rst_n),
    .push  (rx_valid),
    .din   (rx_byte),
    .pop   (rx_pop),
    .dout  (rx_data),
    .empty (rx_empty),
    .full  (rx_full)
  );

endmodule

//==== Test bench =======================================================

module tb_uart;

  reg        clk   = 1'b0;
  reg        rst_n = 1'b0;
  reg        tx_push = 1'b0;
  reg  [7:0] tx_data = 8'h00;
  wire       tx_full;
  reg        rx_pop = 1'b0;
  wire [7:0] rx_data;
  wire       rx_empty;
  wire       frame_error;
  wire       loop;

  integer    sent = 0, received = 0, errors = 0;

  always #10 clk = ~clk;                     // 50 MHz

  uart #(.BAUD(3_125_000)) dut (
    .clk         (clk),
    .rst_n       (rst_n),
    .tx_push     (tx_push),
    .tx_data     (tx_data),
    .tx_full     (tx_full),
    .rx_pop      (rx_pop),
    .rx_data     (rx_data),
    .rx_empty    (rx_empty),
    .frame_error (frame_error),
    .rxd         (loop),
    .txd         (loop)
  );

  // Sends every value of a byte.
  initial begin
    repeat (4) @(negedge clk);
    rst_n = 1'b1;
    while (sent < 256) begin
      @(negedge clk);
      tx_push = !tx_full;
      tx_data = sent[7:0];
      if (!tx_full) sent = sent + 1;
    end
    @(negedge clk) tx_push = 1'b0;
  end

  // Takes what comes back and compares.
  always @(negedge clk) begin
    rx_pop <= 1'b0;
    if (rst_n && !rx_empty && !rx_pop) begin
      if (rx_data !== received[7:0]) begin
        errors = errors + 1;
        $display("ERROR %t: expected %h, got %h", $time, received[7:0], rx_data);
      end
      received = received + 1;
      rx_pop <= 1'b1;
    end
    if (frame_error) errors = errors + 1;
    if (received == 256) begin
      $display("%0d bytes, %0d errors", received, errors);
      $finish;
    end
  end

  initial begin
    #20_000_000 $display("TIMEOUT after %0d bytes", received);
    $finish;
  end

endmodule

`default_nettype wire
