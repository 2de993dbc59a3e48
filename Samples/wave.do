# wave.do - the waves of the serial port's test bench
onerror {resume}
quietly WaveActivateNextPane {} 0

add wave -noupdate -divider {Test bench}
add wave -noupdate -format Logic /tb_uart/clk
add wave -noupdate -format Logic /tb_uart/rst_n
add wave -noupdate -radix unsigned /tb_uart/sent
add wave -noupdate -radix unsigned /tb_uart/received
add wave -noupdate -color Red -radix unsigned /tb_uart/errors

add wave -noupdate -divider {Transmit}
add wave -noupdate -format Logic /tb_uart/tx_push
add wave -noupdate -format Literal -radix hexadecimal /tb_uart/tx_data
add wave -noupdate -format Logic /tb_uart/tx_full
add wave -noupdate -format Logic /tb_uart/loop
add wave -noupdate -group {Transmitter} -radix unsigned /tb_uart/dut/u_tx/state
add wave -noupdate -group {Transmitter} -radix binary /tb_uart/dut/u_tx/shift
add wave -noupdate -group {Transmitter} -radix unsigned /tb_uart/dut/u_tx/index

add wave -noupdate -divider {Receive}
add wave -noupdate -group {Receiver} -radix unsigned /tb_uart/dut/u_rx/state
add wave -noupdate -group {Receiver} -radix hexadecimal /tb_uart/dut/u_rx/data
add wave -noupdate -group {Receiver} -format Logic /tb_uart/dut/u_rx/frame_error
add wave -noupdate -format Literal -radix hexadecimal /tb_uart/rx_data
add wave -noupdate -format Logic /tb_uart/rx_empty

# Fill level of the queues, drawn as a curve
foreach queue {u_tx_fifo u_rx_fifo} {
    add wave -noupdate -format Analog-Step -height 40 -max 16 \
        -radix unsigned /tb_uart/dut/$queue/head
}

TreeUpdate [SetDefaultTree]
configure wave -namecolwidth 220
configure wave -valuecolwidth 80
configure wave -timelineunits us
WaveRestoreCursors {{first byte} {3520 ns} 0} {{last byte} {912 us} 1}
WaveRestoreZoom {0 ns} {1 ms}
update
