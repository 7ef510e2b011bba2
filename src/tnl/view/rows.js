// Rows from the server, numbers for people; nothing here touches the page.

const prefixes = { "-15": "f", "-12": "p", "-9": "n", "-6": "µ", "-3": "m", 0: "", 3: "k", 6: "M", 9: "G", 12: "T" };
// Units that nobody writes with a prefix.
const bare = new Set(["", "dB", "deg", "°", "%", "rad", "rpm", "pu", "K"]);

// The exponent, a multiple of three, in which v of that unit is written; 0 where no prefix suits.
export function exponentFor(v, unit) {
  if (!(Math.abs(v) > 0) || !isFinite(v)) return 0;
  // What rounds up to 1000 belongs to the next prefix.
  const e = 3 * Math.floor((Math.log10(Math.abs(v)) + 1e-9) / 3);
  if (bare.has(unit)) return e >= -3 && e <= 3 ? 0 : e;
  return Math.max(-15, Math.min(12, e));
}
export const unitText = (e, unit) => (bare.has(unit) ? (e ? `1e${e} ${unit}`.trim() : unit) : prefixes[e] + unit);

// "12.35 mV", "-1.5e+20 V", "—" for what is no number.
export function engineering(v, unit, digits = 5) {
  if (v === null || v === undefined || Number.isNaN(v)) return "—";
  if (!isFinite(v)) return v > 0 ? "∞" : "−∞";
  const rounded = Number(v.toPrecision(digits));
  const e = exponentFor(rounded, unit);
  if (bare.has(unit)) return `${sign(e || Math.abs(rounded) >= 1e4 ? plain(rounded) : String(rounded))} ${unit}`.trim();
  const m = rounded / 10 ** e;
  if (Math.abs(m) >= 1e4 || (m !== 0 && Math.abs(m) < 1e-3)) return `${sign(plain(rounded))} ${unit}`;
  return `${sign(String(Number(m.toPrecision(digits))))} ${unitText(e, unit)}`;
}
const plain = (v) => (Math.abs(v) >= 1e6 || Math.abs(v) < 1e-3 ? v.toExponential().replace("e+", "e") : String(v));
const sign = (text) => text.replace(/^-/, "−");

// Digits behind the point that tell ticks apart which are `step` away from each other.
export function decimalsFor(step) {
  let d = 0;
  while (d < 15 && Math.abs(step * 10 ** d - Math.round(step * 10 ** d)) > 1e-6 * step * 10 ** d) ++d;
  return d;
}
export const tickText = (v, step, e) => sign((Math.abs(v) < step * 1e-6 ? 0 : v / 10 ** e).toFixed(decimalsFor(step / 10 ** e)));

const query = (words) => Object.entries(words).filter(([, v]) => v !== undefined && v !== null)
  .map(([k, v]) => `${k}=${encodeURIComponent(v)}`).join("&");

async function doubles(path, words, signal) {
  const answer = await fetch(`api/${path}?${query(words)}`, { signal });
  if (!answer.ok) throw new Error((await answer.text()).trim());
  return new Float64Array(await answer.arrayBuffer());
}

export async function fetchRuns() {
  const answer = await fetch("api/runs");
  if (!answer.ok) throw new Error(`the server says ${answer.status}`);
  return (await answer.json()).runs;
}

// A column made of others, in every file that has these; the text of a fault, or "".
export async function addColumn(text) {
  const answer = await fetch(`api/column?${query({ text })}`);
  return answer.ok ? "" : (await answer.text()).trim();
}

// "5", "4.7k", "-2m"; null for what is no number.
export function numberOf(text) {
  const found = /^\s*([-+−]?[\d.]+(?:[eE][-+]?\d+)?)\s*([fpnuµmkKMG]?)\s*$/.exec(text);
  const digits = found ? Number(found[1].replace("−", "-")) : NaN;
  if (isNaN(digits)) return null;
  return digits * { f: 1e-15, p: 1e-12, n: 1e-9, u: 1e-6, "µ": 1e-6, m: 1e-3, "": 1, k: 1e3, K: 1e3, M: 1e6, G: 1e9 }[found[2]];
}

// Columns without a unit, by name, in groups of comparable size: [[name, size] ...] gives name -> number of its group.
export function sizeGroups(columns, comparable = 8) {
  const sizes = new Map(), groups = new Map();
  for (const [name, size] of columns) sizes.set(name, Math.max(sizes.get(name) ?? 0, size));
  let now = 0, least = 0;
  for (const [name, size] of [...sizes].sort((a, b) => a[1] - b[1])) {
    if (least > 0 && size > comparable * least) { ++now; least = size; }
    if (least === 0) least = size;
    groups.set(name, now);
  }
  return groups;
}

// A table: rows of some columns of one curve. `of` is {run, file, curve, columns, axis}; `window` {from, to, points, ...}.
export async function fetchTable(of, window, signal) {
  const words = { run: of.run, file: of.file, curve: of.curve, columns: of.columns.join(","), axis: of.axis, ...window };
  const raw = await doubles("data", words, signal);
  const [n, columns, whole, rowAxis, lo, hi, rows, version] = raw;
  const y = [];
  for (let j = 1; j < columns; ++j) y.push(raw.subarray(8 + j * n, 8 + (j + 1) * n));
  return {
    of, x: raw.subarray(8, 8 + n), y, rowAxis: rowAxis !== 0, lo, hi, rows, version,
    whole: whole !== 0 && window.from === undefined && window.to === undefined, // all rows of the curve are here
  };
}

export const decibels = (y) => (y > 0 ? 20 * Math.log10(y) : NaN);

// Of a Fourier file, three rows a harmonic, the tips of the sticks.
export function tipsOf(table) {
  const tips = (values) => values.filter((_, i) => i % 3 === 1);
  if (table.x.length % 3 !== 0) return table;
  return { ...table, x: tips(table.x), y: table.y.map(tips) };
}

// The value on the line between two rows, straight over x and y, or over their logarithms where both are above 0.
export function between(x0, x1, y0, y1, x, logX, logY) {
  const part = logX && x0 > 0 ? Math.log(x / x0) / Math.log(x1 / x0) : (x - x0) / (x1 - x0);
  return logY && y0 > 0 && y1 > 0 ? y0 * (y1 / y0) ** part : y0 + (y1 - y0) * part;
}

// Values of a table's columns at x: between rows on a straight line, or at the nearest row. A table of small signals
// tells so, and which of its columns are magnitudes.
export async function valuesAt(table, x, nearest) {
  const none = () => table.y.map(() => NaN);
  const n = table.x.length;
  if (n === 0) return none();
  if (nearest) {
    let best = 0;
    for (let i = 1; i < n; ++i) if (Math.abs(table.x[i] - x) < Math.abs(table.x[best] - x)) best = i;
    return table.y.map((y) => y[best]);
  }
  if (!table.whole) return Array.from(await doubles("at", { ...table.of, columns: table.of.columns.join(","), x }));
  if (!(x >= table.x[0] && x <= table.x[n - 1])) return none();
  let lo = 0, hi = n; // the last row at or before x
  while (hi - lo > 1) {
    const mid = (lo + hi) >> 1;
    if (table.x[mid] <= x) lo = mid; else hi = mid;
  }
  const x0 = table.x[lo], x1 = table.x[Math.min(lo + 1, n - 1)];
  return table.y.map((y, j) => (x > x0 && x1 > x0
    ? between(x0, x1, y[lo], y[lo + 1], x, table.overFrequency, table.magnitudes?.[j]) : y[lo]));
}

// One axis for several tables, as the plots want it: rows in order of x, equal ones of different tables together, those
// of one table kept apart. picks: [[table, column of its y] ...]. Where a series has no row there is undefined, where it
// has no number null, which breaks the line. keep(y) says whether a value can be drawn.
export function merge(picks, keepX, keepY) {
  const tables = [...new Set(picks.map(([table]) => table))];
  const value = (y) => (keepY(y) ? y : null);
  if (tables.length === 1 && Array.prototype.every.call(tables[0].x, keepX))
    return [Array.from(tables[0].x), ...picks.map(([table, j]) => Array.from(table.y[j], value))];
  const data = [[], ...picks.map(() => [])];
  const at = tables.map(() => 0);
  for (;;) {
    let x = Infinity;
    tables.forEach((table, k) => {
      while (at[k] < table.x.length && !keepX(table.x[at[k]])) ++at[k];
      if (at[k] < table.x.length && table.x[at[k]] < x) x = table.x[at[k]];
    });
    if (x === Infinity) return data;
    data[0].push(x);
    const takes = tables.map((table, k) => at[k] < table.x.length && table.x[at[k]] === x);
    picks.forEach(([table, j], s) => {
      const k = tables.indexOf(table);
      data[s + 1].push(takes[k] ? value(table.y[j][at[k]]) : undefined);
    });
    takes.forEach((takes_k, k) => { if (takes_k) ++at[k]; });
  }
}
