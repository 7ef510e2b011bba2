// Pieces of the page that know nothing of runs: elements, colours, texts of ticks, sticks, an input for a range.

import { exponentFor, numberOf, tickText } from "./rows.js";

export const dashes = [[], [8, 4], [2, 3], [10, 3, 2, 3]]; // by run
const nColours = 8;

export const css = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();
export function el(tag, props = {}, ...children) {
  const node = Object.assign(document.createElement(tag), props);
  node.append(...children.filter((c) => c !== null));
  return node;
}
export const colourOf = (series) => css(`--s${1 + series.colour % nColours}`);

export function lineSample(series) {
  const svg = document.createElementNS("http://www.w3.org/2000/svg", "svg");
  svg.setAttribute("class", "line");
  const line = document.createElementNS("http://www.w3.org/2000/svg", "line");
  const words = { x1: 0, x2: 22, y1: 5, y2: 5, stroke: colourOf(series), "stroke-width": 2.5, "stroke-dasharray": dashes[series.run % dashes.length].join(" ") };
  for (const [k, v] of Object.entries(words)) line.setAttribute(k, v);
  svg.append(line);
  return svg;
}

// An input for the ends of a y axis, "0:5", "0:" or ":5". changed() gets {text, lo, hi}, null for an end that the values
// determine; or null when the text is gone.
export function endsInput(value, changed) {
  const input = el("input", { type: "text", className: "yrange", placeholder: "y: auto", ariaLabel: "ends of the y axis",
    title: "ends of the y axis, as 0:5, 0: or :5", value });
  input.onchange = () => {
    const text = input.value.trim(), parts = text.split(":").map((t) => (t.trim() === "" ? null : numberOf(t) ?? NaN));
    const bad = text !== "" && (parts.length !== 2 || parts.some(Number.isNaN) || parts.every((p) => p === null) ||
      (parts[0] !== null && parts[1] !== null && !(parts[0] < parts[1])));
    input.classList.toggle("bad", bad);
    if (!bad) changed(text === "" ? null : { text, lo: parts[0], hi: parts[1] });
  };
  return input;
}

// Distances of ticks that suit a unit: parts of a turn, decades of decibels; else what uPlot takes.
export function stepsFor(unit) {
  if (unit !== "deg" && unit !== "dB") return null;
  const small = [-6, -5, -4, -3, -2, -1, 0].flatMap((e) => [1, 2, 5].map((m) => m * 10 ** e));
  const large = [3, 4, 5, 6, 7, 8, 9].flatMap((e) => [1, 2, 5].map((m) => m * 10 ** e));
  return unit === "deg" ? [...small, 15, 45, 90, 180, 360, 720, ...large] : [...small, 10, 20, 40, 60, 80, 100, 200, 500, ...large];
}

const superscript = (n) => String(n).replace(/./g, (c) => "⁻⁰¹²³⁴⁵⁶⁷⁸⁹"["-0123456789".indexOf(c)]);
// Powers of ten have a text; their parts too, when there are few.
export function logTexts(splits) {
  const few = splits.length < 8;
  return splits.map((v) => {
    if (v === null) return "";
    const e = Math.log10(v), isPower = Math.abs(e - Math.round(e)) < 1e-9;
    if (!isPower) return few ? String(Number(v.toPrecision(3))) : "";
    return Math.abs(e) < 3.5 ? String(Number(v.toPrecision(3))) : `10${superscript(Math.round(e))}`;
  });
}
export function texts(splits, step, unit, scale, log) {
  if (log) return logTexts(splits);
  const e = exponentFor(Math.max(Math.abs(scale.min), Math.abs(scale.max)), unit);
  return splits.map((v) => (v === null ? "" : tickText(v, step, e)));
}

// Lines from zero; those of several series stand beside each other.
export function sticks(i, n) {
  return (u, k, from, to) => {
    const path = new Path2D(), by = (i - (n - 1) / 2) * 5 * devicePixelRatio;
    const zero = u.valToPos(Math.max(u.scales.y.min, Math.min(0, u.scales.y.max)), "y", true);
    for (let j = from; j <= to; ++j) {
      const x = u.data[0][j], y = u.data[k][j];
      if (y === null || y === undefined) continue;
      const left = u.valToPos(x, "x", true) + by;
      path.moveTo(left, zero);
      path.lineTo(left, u.valToPos(y, "y", true));
    }
    return { stroke: path, fill: null, flags: 0 };
  };
}
