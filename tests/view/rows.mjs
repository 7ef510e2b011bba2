// The page's numbers and its merging of rows, without a browser. Argument: the folder of the source tree.
import assert from "node:assert/strict";
import { pathToFileURL } from "node:url";

const { between, decibels, decimalsFor, engineering, merge, tickText, tipsOf, valuesAt } =
  await import(pathToFileURL(`${process.argv[2]}/src/tnl/view/rows.js`));

// Numbers with units, in steps of a thousand.
for (const [v, unit, text] of [
  [0.01235, "V", "12.35 mV"], [-1500, "V", "−1.5 kV"], [999.9999, "V", "1 kV"], [0, "A", "0 A"], [1e-9, "s", "1 ns"],
  [2.5e-6, "s", "2.5 µs"], [1e3, "Hz", "1 kHz"], [1e20, "V", "1e20 V"], [1e-20, "V", "1e-20 V"], [0.5, "", "0.5"],
  [12345, "", "12345"], [1e-7, "", "1e-7"], [-45, "deg", "−45 deg"], [NaN, "V", "—"], [Infinity, "V", "∞"],
  [123456.789, "V", "123.46 kV"]])
  assert.equal(engineering(v, unit), text);

// Ticks tell steps apart, and have no more digits than that.
for (const [step, digits] of [[1, 0], [0.5, 1], [0.25, 2], [1e-6, 6], [20, 0]]) assert.equal(decimalsFor(step), digits);
assert.equal(tickText(0.005, 0.001, -3), "5");
assert.equal(tickText(-0.0025, 0.0005, -3), "−2.5");
assert.equal(tickText(0.30000000000000004, 0.1, 0), "0.3");
assert.equal(tickText(-1e-17, 0.1, 0), "0.0");

// Rows of two tables in order; equal ones together, a jump of one table kept as two rows, no number as a gap.
const table = (x, ...y) => ({ x: Float64Array.from(x), y: y.map((values) => Float64Array.from(values)), whole: true });
const one = table([0, 1, 1, 3], [10, 11, 12, NaN]), two = table([1, 2], [20, 21]);
assert.deepEqual(merge([[one, 0], [two, 0]], isFinite, isFinite),
  [[0, 1, 1, 2, 3], [10, 11, 12, undefined, null], [undefined, 20, undefined, 21, undefined]]);
assert.deepEqual(merge([[one, 0]], isFinite, isFinite), [[0, 1, 1, 3], [10, 11, 12, null]]);
assert.deepEqual(merge([[one, 0]], (x) => x > 0, (y) => y > 11), [[1, 1, 3], [null, 12, null]]);
assert.deepEqual(merge([], isFinite, isFinite), [[]]);

// Between rows on a straight line, behind a jump, nothing outside.
assert.deepEqual(await valuesAt(one, 0.5, false), [10.5]);
assert.deepEqual(await valuesAt(one, 1, false), [12]);
assert.deepEqual(await valuesAt(one, 4, false), [NaN]);
assert.deepEqual(await valuesAt(two, 1.9, true), [21]);

// Small signals: straight over the logarithm of frequency, magnitudes in dB; one small signal has no place in dB.
assert.ok(Math.abs(between(1, 100, 0, -90, 10, true, false) + 45) < 1e-9);
assert.ok(Math.abs(between(1, 100, 10, 0.1, 10, true, true) - 1) < 1e-9);
assert.equal(between(0, 2, 10, 20, 1, true, false), 15);
assert.equal(decibels(0.1), -20);
assert.ok(Number.isNaN(decibels(0)));
const bode = { ...table([1, 100], [10, 0.1], [0, -90]), overFrequency: true, magnitudes: [true, false] };
assert.deepEqual((await valuesAt(bode, 10, false)).map((v) => Math.round(1e9 * v)), [1e9, -45e9]);

// A curve in the complex plane: all points are inside, with the same unit along both axes.
const { fit, roundStep } = await import(pathToFileURL(`${process.argv[2]}/src/tnl/view/locus.js`));
const view = fit([[3, 0], [0, -2], [NaN, 7], [-4, 0]], 600, 300);
assert.ok(view.x - 300 * view.unit < -4 && view.x + 300 * view.unit > 3 && view.y - 150 * view.unit < -2 && view.y + 150 * view.unit > 0);
assert.ok(view.unit < 1.2 * 7 / 600);
assert.deepEqual([0.07, 0.3, 12, 60].map(roundStep).map((v) => Number(v.toPrecision(3))), [0.1, 0.5, 20, 100]);

// Lanes: bits of a number are one, lowest first, in whatever order they stand; two that do not begin at 0 are none.
const { lanesOf, laneText } = await import(pathToFileURL(`${process.argv[2]}/src/tnl/view/lanes.js`));
const levels = ["clk", "q1", "q0", "g1", "g2", "q2", "d5", "d6", "d7"].map((name, column) => (
  { run: 0, file: "d.dat", curve: 0, column: column + 1, column_name: name, name: `${name} · one` }));
const lanes = lanesOf(levels);
assert.deepEqual(lanes.map((lane) => lane.name), ["clk · one", "q[2:0] · one", "g1 · one", "g2 · one", "d[7:5] · one"]);
assert.deepEqual(lanes[1].bits, [2, 1, 5]);
const seen = [2, 0, 1, 0, 0, 1, 1, 2, 0];
assert.deepEqual(lanes.map((lane) => laneText(lane, seen)), ["x", "5", "0", "0", "x"]);
assert.equal(laneText(lanes[1], [0, NaN, 0, 0, 0, 0]), "—");

// The tips of sticks.
const sticks = tipsOf(table([-0.1, 0, 0.1, 0.9, 1, 1.1], [0, 5, 0, 0, 7, 0]));
assert.deepEqual([...sticks.x], [0, 1]);
assert.deepEqual([...sticks.y[0]], [5, 7]);
console.log("ok: numbers and merged rows");
