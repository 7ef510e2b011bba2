// Small signals in the complex plane: the imaginary part over the real part, with axes of equal lengths and the point -1.
// To the page it is a group of plots like those over an axis (plots.js), without cursors.

import { colourOf, css, dashes, el, lineSample } from "./parts.js";
import { engineering, fetchTable, tickText } from "./rows.js";

const margin = { left: 76, right: 14, top: 8, bottom: 40 }; // CSS pixels
const words = "12px system-ui, sans-serif";

// Ends of both axes in a frame of this size, which hold all points: [x, y] in the middle, units a pixel.
export function fit(points, width, height) {
  let [x0, x1, y0, y1] = [Infinity, -Infinity, Infinity, -Infinity];
  for (const [x, y] of points) {
    if (!isFinite(x) || !isFinite(y)) continue;
    [x0, x1, y0, y1] = [Math.min(x0, x), Math.max(x1, x), Math.min(y0, y), Math.max(y1, y)];
  }
  if (!(x0 <= x1)) [x0, x1, y0, y1] = [-1, 1, -1, 1];
  const unit = 1.12 * Math.max((x1 - x0) / width, (y1 - y0) / height) || 2 / width;
  return { x: (x0 + x1) / 2, y: (y0 + y1) / 2, unit };
}
// A round distance of ticks that are at least `least` apart: 1, 2 or 5 times a power of ten.
export function roundStep(least) {
  const power = 10 ** Math.floor(Math.log10(least));
  return [1, 2, 5, 10].find((m) => m * power >= least) * power;
}

export class Locus {
  // As of a Group; series: [{run, file, curve, columns: [real, imaginary], axis, name, unit, colour}]
  constructor(key, axis, at, readouts, touched) {
    Object.assign(this, { key, axis, touched, series: [], tables: [], view: null, turn: 0, hover: null });
    this.root = at.appendChild(el("section", { className: "group" }));
    this.text = el("span", { className: "x", textContent: "complex plane" });
    this.bar = el("div", { className: "bar" }, this.text,
      el("button", { type: "button", className: "end", textContent: "Show all", onclick: () => this.zoom(null) }));
    this.legend = el("div", { className: "legend" });
    this.canvas = el("canvas", { className: "locus" });
    this.root.append(this.bar, this.legend, this.canvas);
    this.listen();
  }
  remove() {
    this.stop?.abort();
    this.root.remove();
  }

  choose(series, height) {
    Object.assign(this, { series, height });
    this.legend.replaceChildren(...series.map((s) => el("span", { className: "item" }, lineSample(s), s.name)));
    this.load();
  }
  async load() {
    const turn = ++this.turn;
    this.stop?.abort();
    this.stop = new AbortController();
    try {
      const tables = await Promise.all(this.series.map((s) =>
        fetchTable({ ...s, columns: s.columns }, { points: 20000 }, this.stop.signal)));
      if (turn !== this.turn) return;
      this.tables = tables;
    } catch (fault) {
      if (fault.name !== "AbortError" && turn === this.turn) this.text.textContent = fault.message;
    }
    this.build();
  }
  resize(height) {
    this.height = height;
    this.build();
  }

  // ---- picture ----

  frame() {
    const width = Math.max(200, this.root.clientWidth), height = this.height + margin.bottom;
    return { width, height, w: width - margin.left - margin.right, h: height - margin.top - margin.bottom };
  }
  points() { return this.tables.flatMap((t) => Array.from(t.x, (_, i) => [t.y[0][i], t.y[1][i]])); }
  shownView() {
    const { w, h } = this.frame();
    return this.view ?? fit([...this.points(), [-1, 0]], w, h);
  }
  // Pixels of a value, and back.
  placeOf(x, y) {
    const { w, h } = this.frame(), v = this.shownView();
    return [margin.left + w / 2 + (x - v.x) / v.unit, margin.top + h / 2 - (y - v.y) / v.unit];
  }
  valueAt(left, top) {
    const { w, h } = this.frame(), v = this.shownView();
    return [v.x + (left - margin.left - w / 2) * v.unit, v.y - (top - margin.top - h / 2) * v.unit];
  }

  build() {
    const { width, height, w, h } = this.frame(), dpr = devicePixelRatio, view = this.shownView();
    Object.assign(this.canvas, { width: Math.round(width * dpr), height: Math.round(height * dpr) });
    Object.assign(this.canvas.style, { width: `${width}px`, height: `${height}px` });
    const ctx = this.canvas.getContext("2d");
    ctx.scale(dpr, dpr);
    ctx.font = words;
    const line = (x0, y0, x1, y1) => { ctx.beginPath(); ctx.moveTo(x0, y0); ctx.lineTo(x1, y1); ctx.stroke(); };
    const step = roundStep(70 * view.unit);
    const ticks = (middle, length) => {
      const first = Math.ceil((middle - length / 2 * view.unit) / step), last = Math.floor((middle + length / 2 * view.unit) / step);
      return Array.from({ length: Math.max(0, last - first + 1) }, (_, i) => (first + i) * step);
    };
    ctx.fillStyle = css("--ink");
    ctx.textBaseline = "middle";
    for (const x of ticks(view.x, w)) {
      const [left] = this.placeOf(x, 0);
      ctx.strokeStyle = css(x === 0 ? "--faint" : "--grid");
      line(left, margin.top, left, margin.top + h);
      ctx.textAlign = "center";
      ctx.fillText(tickText(x, step, 0), left, margin.top + h + 12);
    }
    for (const y of ticks(view.y, h)) {
      const [, top] = this.placeOf(0, y);
      ctx.strokeStyle = css(y === 0 ? "--faint" : "--grid");
      line(margin.left, top, margin.left + w, top);
      ctx.textAlign = "right";
      ctx.fillText(tickText(y, step, 0), margin.left - 6, top);
    }
    const unit = this.series.every((s) => s.unit === this.series[0].unit) && this.series[0]?.unit ? ` (${this.series[0].unit})` : "";
    ctx.textAlign = "center";
    ctx.fillText(`real part${unit}`, margin.left + w / 2, height - 8);
    ctx.save();
    ctx.translate(12, margin.top + h / 2);
    ctx.rotate(-Math.PI / 2);
    ctx.fillText(`imaginary part${unit}`, 0, 0);
    ctx.restore();

    ctx.save();
    ctx.beginPath();
    ctx.rect(margin.left, margin.top, w, h);
    ctx.clip();
    this.tables.forEach((t, k) => {
      const s = this.series[k];
      if (!s) return;
      ctx.strokeStyle = ctx.fillStyle = colourOf(s);
      ctx.lineWidth = 1.5;
      ctx.setLineDash(dashes[s.run % dashes.length]);
      ctx.beginPath();
      let down = false;
      for (let i = 0; i < t.x.length; ++i) {
        const [left, top] = this.placeOf(t.y[0][i], t.y[1][i]);
        if (!isFinite(left) || !isFinite(top)) { down = false; continue; }
        if (down) ctx.lineTo(left, top); else ctx.moveTo(left, top);
        down = true;
      }
      ctx.stroke();
    });
    ctx.setLineDash([]);
    const [left, top] = this.placeOf(-1, 0);
    ctx.strokeStyle = ctx.fillStyle = css("--warn");
    ctx.lineWidth = 2;
    line(left - 5, top - 5, left + 5, top + 5);
    line(left - 5, top + 5, left + 5, top - 5);
    ctx.textAlign = "right";
    ctx.fillText("−1", left - 8, top - 9);
    if (this.hover) {
      ctx.fillStyle = colourOf(this.hover.series);
      ctx.beginPath();
      ctx.arc(...this.placeOf(this.hover.x, this.hover.y), 4, 0, 2 * Math.PI);
      ctx.fill();
    }
    ctx.restore();
    ctx.strokeStyle = css("--edge");
    ctx.lineWidth = 1;
    ctx.strokeRect(margin.left, margin.top, w, h);
  }

  // ---- mouse ----

  place(e) {
    const box = this.canvas.getBoundingClientRect();
    return [e.clientX - box.left, e.clientY - box.top];
  }
  // The row that is drawn nearest, within 40 pixels.
  nearest(left, top) {
    let best = null, least = 40;
    this.tables.forEach((t, k) => {
      for (let i = 0; i < t.x.length; ++i) {
        const [x, y] = this.placeOf(t.y[0][i], t.y[1][i]), far = Math.hypot(x - left, y - top);
        if (far < least) { least = far; best = { series: this.series[k], f: t.x[i], x: t.y[0][i], y: t.y[1][i] }; }
      }
    });
    return best;
  }
  listen() {
    this.canvas.addEventListener("mouseenter", () => this.touched(this));
    this.canvas.addEventListener("mouseleave", () => this.point(null));
    this.canvas.addEventListener("mousemove", (e) => this.point(this.nearest(...this.place(e))));
    this.canvas.addEventListener("dblclick", () => this.zoom(null));
    this.canvas.addEventListener("wheel", (e) => {
      e.preventDefault();
      this.zoomTo(this.valueAt(...this.place(e)), e.deltaY < 0 ? 0.8 : 1.25);
    }, { passive: false });
    this.canvas.addEventListener("mousedown", (e) => {
      const start = [e.clientX, e.clientY], view = this.shownView();
      const move = (m) => {
        this.view = { ...view, x: view.x - (m.clientX - start[0]) * view.unit, y: view.y + (m.clientY - start[1]) * view.unit };
        this.build();
      };
      const end = () => { removeEventListener("mousemove", move); removeEventListener("mouseup", end); };
      addEventListener("mousemove", move);
      addEventListener("mouseup", end);
    });
  }
  point(row) {
    this.hover = row;
    const { name, unit } = this.axis;
    this.text.textContent = row === null ? "complex plane"
      : `${row.series.name}: ${name} ${engineering(row.f, unit)}, ${engineering(row.x, row.series.unit)} ${row.y < 0 ? "−" : "+"} j ${engineering(Math.abs(row.y), row.series.unit)}`;
    this.build();
  }
  zoomTo([x, y], factor) {
    const v = this.shownView();
    this.view = { x: x + (v.x - x) * factor, y: y + (v.y - y) * factor, unit: v.unit * factor };
    this.build();
  }

  // ---- keys of the page ----

  zoom() { this.view = null; this.build(); }
  zoomAt(at, factor) { const v = this.shownView(); this.zoomTo([v.x, v.y], factor); }
  shift(part) {
    const v = this.shownView(), { w } = this.frame();
    this.view = { ...v, x: v.x + part * w * v.unit };
    this.build();
  }
  shown() { return [0, 1]; }
  even(x) { return x; }
  uneven(x) { return x; }
  mark() {}
  clearMarks() {}
}
