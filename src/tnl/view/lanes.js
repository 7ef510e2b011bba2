// Digital levels on lanes under one another: 0, 1 and 2, which is unknown; bits of a number as one lane.

import { colourOf, css } from "./parts.js";

const laneHeight = 26, numberSize = 12; // CSS pixels

export const lanesHeight = (n) => Math.max(1, n) * laneHeight + 16;

// "q12" of a file's curve: where it belongs, and its number; null without one, or where nobody gave the name.
function numbered(s) {
  const found = /^(.*?[^0-9])(0|[1-9]\d{0,3})$/.exec(s.column_name);
  if (!found || s.column_name === `c${s.column + 1}`) return null;
  return { key: JSON.stringify([s.run, s.file, s.curve, found[1]]), stem: found[1], number: Number(found[2]) };
}

// Lanes of the series, in their order: {name, bits, first}; bits, lowest first, are positions among the series. Names
// that end in consecutive numbers are bits of one: two or more from 0 on, three or more from another number on.
export function lanesOf(series) {
  const stems = new Map();
  series.forEach((s, i) => {
    const n = numbered(s);
    if (!n) return;
    if (!stems.has(n.key)) stems.set(n.key, new Map());
    if (!stems.get(n.key).has(n.number)) stems.get(n.key).set(n.number, { i, stem: n.stem });
  });
  const laneOf = new Map(); // position -> its lane
  for (const of of stems.values()) {
    const numbers = [...of.keys()].sort((a, b) => a - b);
    for (let k = 0, end; k < numbers.length; k = end) {
      for (end = k + 1; numbers[end] === numbers[k] + end - k;) ++end;
      if (end - k < (numbers[k] === 0 ? 2 : 3)) continue;
      const bits = numbers.slice(k, end).map((n) => of.get(n).i), at = Math.min(...bits), first = series[at];
      const range = `${of.get(numbers[k]).stem}[${numbers[end - 1]}:${numbers[k]}]`;
      const lane = { at, bits, first, name: first.name.replace(first.column_name, range) };
      for (const i of bits) laneOf.set(i, lane);
    }
  }
  return series.map((s, i) => laneOf.get(i) ?? { at: i, bits: [i], first: s, name: s.name }).filter((lane, i) => lane.at === i);
}

// "1", "x", "a7": what the bits are; values by position among the series.
export function laneText(lane, values) {
  const level = (i) => (values[i] === 0 || values[i] === 1 ? values[i] : null);
  if (lane.bits.some((i) => values[i] === null || values[i] === undefined || Number.isNaN(values[i]))) return "—";
  if (lane.bits.length === 1) return level(lane.bits[0]) === null ? "x" : String(level(lane.bits[0]));
  let text = "";
  for (let k = 0; k < lane.bits.length; k += 4) {
    const digit = lane.bits.slice(k, k + 4).map(level);
    text = (digit.includes(null) ? "x" : digit.reduce((sum, bit, j) => sum + (bit << j), 0).toString(16)) + text;
  }
  return text;
}

// What holds from where to where, in pixels: [{from, to, text, known, none}].
function stretchesOf(u, lane) {
  const all = [], x = u.data[0], columns = lane.bits.map((i) => u.data[i + 1]);
  const now = {};
  let open = null;
  for (let k = 0; k < x.length; ++k) {
    if (columns[0][k] === undefined) continue; // a row of another table
    columns.forEach((c, b) => { now[lane.bits[b]] = c[k]; });
    const text = laneText(lane, now), left = u.valToPos(x[k], "x", true);
    if (open) open.to = left;
    if (open?.text === text) continue;
    open = { from: left, to: left, text, known: !/[x—]/.test(text), none: text === "—" };
    all.push(open);
  }
  return all.filter((s) => s.to > s.from);
}

// Stretches that are too narrow for a number, in a row, are one busy stretch.
function gathered(stretches, narrow) {
  const all = [];
  for (const s of stretches) {
    const last = all[all.length - 1];
    if (s.to - s.from > narrow || s.none) all.push(s);
    else if (last?.busy && last.to === s.from) last.to = s.to;
    else all.push({ from: s.from, to: s.to, busy: true });
  }
  return all;
}

function hatch(ctx, left, top, width, height, dpr) {
  ctx.save();
  ctx.beginPath();
  ctx.rect(left, top, width, height);
  ctx.clip();
  ctx.fillStyle = css("--grid");
  ctx.fillRect(left, top, width, height);
  ctx.strokeStyle = css("--faint");
  ctx.lineWidth = dpr;
  ctx.beginPath();
  for (let foot = Math.floor((left - height) / (6 * dpr)) * 6 * dpr; foot < left + width; foot += 6 * dpr) {
    ctx.moveTo(foot, top + height);
    ctx.lineTo(foot + height, top);
  }
  ctx.stroke();
  ctx.restore();
}

function drawNumber(ctx, s, top, height, dpr) {
  const by = Math.min(3 * dpr, (s.to - s.from) / 2), middle = top + height / 2;
  ctx.beginPath();
  ctx.moveTo(s.from, middle);
  for (const [x, y] of [[s.from + by, top], [s.to - by, top], [s.to, middle], [s.to - by, top + height], [s.from + by, top + height]]) ctx.lineTo(x, y);
  ctx.closePath();
  ctx.stroke();
}

// The text stands in the middle of what is seen of its stretch.
function drawText(ctx, s, bbox, middle, dpr) {
  const from = Math.max(s.from, bbox.left), to = Math.min(s.to, bbox.left + bbox.width);
  ctx.fillStyle = css("--ink");
  if (ctx.measureText(s.text).width < to - from - 6 * dpr) ctx.fillText(s.text, (from + to) / 2, middle);
}

function drawBus(ctx, bbox, stretches, top, height, colour, dpr) {
  for (const s of gathered(stretches, 2 * dpr)) {
    if (s.none) continue;
    if (s.busy) {
      ctx.fillStyle = colour;
      ctx.globalAlpha = 0.45;
      ctx.fillRect(s.from, top, s.to - s.from, height);
      ctx.globalAlpha = 1;
    } else if (s.known) {
      drawNumber(ctx, s, top, height, dpr);
      drawText(ctx, s, bbox, top + height / 2, dpr);
    } else {
      hatch(ctx, s.from, top, s.to - s.from, height, dpr);
    }
  }
}

function drawLevel(ctx, stretches, top, height, dpr) {
  for (const s of stretches) if (s.text === "x") hatch(ctx, s.from, top, s.to - s.from, height, dpr);
  ctx.beginPath();
  let before = null;
  for (const s of stretches) {
    const y = s.text === "1" ? top : top + height;
    if (s.known) {
      if (before?.known && before.to === s.from) ctx.lineTo(s.from, y); else ctx.moveTo(s.from, y);
      ctx.lineTo(s.to, y);
    }
    before = s;
  }
  ctx.stroke();
}

export function drawLanes(u, lanes) {
  const { ctx, bbox } = u, dpr = devicePixelRatio, step = bbox.height / lanes.length;
  ctx.save();
  ctx.beginPath();
  ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
  ctx.clip();
  ctx.setLineDash([]);
  ctx.font = `${numberSize * dpr}px system-ui, sans-serif`;
  ctx.textAlign = "center";
  ctx.textBaseline = "middle";
  ctx.lineJoin = "round";
  lanes.forEach((lane, n) => {
    const top = bbox.top + step * (n + 0.18), height = step * 0.64, colour = colourOf(lane.first);
    ctx.strokeStyle = css("--grid");
    ctx.lineWidth = dpr;
    ctx.beginPath();
    ctx.moveTo(bbox.left, bbox.top + step * n);
    ctx.lineTo(bbox.left + bbox.width, bbox.top + step * n);
    ctx.stroke();
    ctx.strokeStyle = colour;
    ctx.lineWidth = 1.5 * dpr;
    const stretches = stretchesOf(u, lane);
    if (lane.bits.length > 1) drawBus(ctx, bbox, stretches, top, height, colour, dpr);
    else drawLevel(ctx, stretches, top, height, dpr);
  });
  ctx.restore();
}
