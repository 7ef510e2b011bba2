// A D flip-flop whose q and qb follow a rising clock after 3 ns (q rises) or 4 ns (q falls).
`timescale 1ns/1ps
module flop(input d, input clk, output reg q, output reg qb);
  initial begin q = 0; qb = 1; end
  always @(posedge clk) if (d != q) begin
    if (d) begin #3 q = 1; qb = 0; end
    else begin #4 q = 0; qb = 1; end
  end
endmodule
module top;
  reg ck;
  wire q0, q1, q2, q3, q0b, q1b, q2b, q3b, a0, a1, nine;
  flop f0(q0b, ck, q0, q0b), f1(q1b, q0b, q1, q1b), f2(q2b, q1b, q2, q2b), f3(q3b, q2b, q3, q3b);
  and #(2, 1) g0(a0, q0, q3);
  nor #(2, 1) g1(a1, q1, q2);
  and #(1, 2) g2(nine, a0, a1);
  initial begin
    ck = 0;
    forever begin #40 ck = 1; #60 ck = 0; end
  end
  always @(ck) if ($realtime > 5) $display("%0.3f ck %b", $realtime, ck);
  always @(q0) if ($realtime > 5) $display("%0.3f q0 %b", $realtime, q0);
  always @(q1) if ($realtime > 5) $display("%0.3f q1 %b", $realtime, q1);
  always @(q2) if ($realtime > 5) $display("%0.3f q2 %b", $realtime, q2);
  always @(q3) if ($realtime > 5) $display("%0.3f q3 %b", $realtime, q3);
  always @(nine) if ($realtime > 5) $display("%0.3f nine %b", $realtime, nine);
  initial #3400 $finish;
endmodule
