`timescale 1ns/1ps
module flop(input d, input clk, output reg q, output reg qb);
  initial begin
    q = 0; qb = 1;
    #105 q = 0; qb = 1;  // the ring has settled by then
  end
  always @(posedge clk) if (d != q) begin
    if (d) begin #2 q = 1; qb = 0; end
    else begin #3 q = 0; qb = 1; end
  end
endmodule
module top;
  reg go;
  wire r0, r1, r2, r3, r4, h, hb;
  nand #(2, 3) n(r0, go, r4);
  nand #(1, 2) i1(r1, r0, r0);
  nand #(3, 1) i2(r2, r1, r1);
  nor #(2, 2) i3(r3, r2, r2);
  nor #(1, 4) i4(r4, r3, r3);
  flop f(hb, r4, h, hb);
  initial begin
    go = 0;
    #110 go = 1;
    #390 go = 0;
  end
  always @(r0) if ($realtime > 105) $display("%0.3f r0 %b", $realtime - 100.0, r0);
  always @(r2) if ($realtime > 105) $display("%0.3f r2 %b", $realtime - 100.0, r2);
  always @(r4) if ($realtime > 105) $display("%0.3f r4 %b", $realtime - 100.0, r4);
  always @(h) if ($realtime > 105) $display("%0.3f h %b", $realtime - 100.0, h);
  initial #700 $finish;
endmodule
