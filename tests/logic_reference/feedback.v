`timescale 1ns/1ps
module flop(input d, input clk, output reg q);
  parameter first = 0;
  initial q = first;
  always @(posedge clk) if (d != q) begin
    if (d) #2 q = 1;
    else #3 q = 0;
  end
endmodule
module top;
  reg ck;
  wire q0, q1, q2, q3, q4, f, p0, p1, p2, parity;
  flop #(1) f0(f, ck, q0);
  flop f1(q0, ck, q1), f2(q1, ck, q2), f3(q2, ck, q3), f4(q3, ck, q4);
  xor #1 x0(f, q4, q1);
  xor #4 x1(p0, q0, q1);
  xor #4 x2(p1, q2, q3);
  xor #4 x3(p2, p0, p1);
  xor #12 x4(parity, p2, q4);
  initial begin
    ck = 0;
    forever begin #25 ck = 1; #25 ck = 0; end
  end
  always @(q0) if ($realtime > 24) $display("%0.3f q0 %b", $realtime, q0);
  always @(q4) if ($realtime > 24) $display("%0.3f q4 %b", $realtime, q4);
  always @(parity) if ($realtime > 24) $display("%0.3f parity %b", $realtime, parity);
  initial #2000 $finish;
endmodule
