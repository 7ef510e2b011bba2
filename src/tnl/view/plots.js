// A group of plots over one axis: one plot a unit or as names were dragged, one view of the axis, two cursors.

import { drawLanes, lanesHeight, lanesOf, laneText } from "./lanes.js";
import { colourOf, css, dashes, el, endsInput, lineSample, logTexts, stepsFor, sticks, texts } from "./parts.js";
import { decibels, engineering, exponentFor, fetchTable, merge, tickText, tipsOf, unitText, valuesAt } from "./rows.js";

const gutter = 76; // CSS pixels left of a plot, so that all stand in line
export class Group {
  // axis: {name, unit, kind}; at, readouts: where plots and table are put; touched(): a mouse is here
  constructor(key, axis, at, readouts, touched) {
    Object.assign(this, { key, axis, touched });
    this.view = null; // [from, to] of the axis; null: all
    this.overFrequency = axis.kind === "ac";
    this.logX = this.decibel = this.overFrequency;
    this.logY = new Map(); // plot -> bool
    this.endsY = new Map(); // plot -> {lo, hi} of its y axis
    this.movedTo = new Map(); // series -> the plot that it was dragged to
    this.nOwn = 0; // plots made by dragging
    this.marks = { a: null, b: null };
    this.hover = null;
    this.series = [];
    this.tables = [];
    this.plots = [];
    this.turn = 0;
    this.sticks = axis.kind === "fourier";
    this.root = at.appendChild(el("section", { className: "group" }));
    this.xText = el("span", { className: "x" });
    this.busy = el("span", { className: "busy" });
    const logX = el("input", { type: "checkbox", checked: this.logX });
    logX.onchange = () => { this.logX = logX.checked; this.view = null; this.build(); this.load(); };
    const decibel = el("input", { type: "checkbox", checked: this.decibel });
    decibel.onchange = () => { this.decibel = decibel.checked; this.choose(this.chosen, this.height); };
    const all = el("button", { type: "button", textContent: "Show all", onclick: () => this.zoom(null) });
    this.bar = el("div", { className: "bar" }, this.xText, this.busy,
      this.overFrequency ? el("label", { className: "end" }, decibel, "dB") : null,
      el("label", { className: this.overFrequency ? "" : "end" }, logX, "log axis"), all);
    this.rows = el("div");
    this.readout = el("div", { className: "readout", hidden: true });
    this.root.append(this.bar, this.rows);
    this.takesNames(this.bar, () => `own ${this.nOwn++}`);
    readouts.append(this.readout);
    this.showX();
  }

  remove() {
    this.stop?.abort();
    for (const p of this.plots) p.u.destroy();
    this.root.remove();
    this.readout.remove();
  }

  // series: [{run, file, curve, column, axis, name, unit, colour, plot}]; of magnitudes of small signals also isMagnitude, linear: their plot when not in dB
  choose(series, height) {
    this.height = height;
    this.chosen = series;
    // Magnitudes of small signals in dB above phases, above all else.
    const rank = (s) => (s.unit === "dB" || s.isMagnitude ? 0 : s.unit === "deg" ? 1 : 2);
    this.series = !this.overFrequency ? series : series
      .map((s) => (!s.isMagnitude ? s : this.decibel ? { ...s, unit: "dB", show: decibels } : { ...s, plot: s.linear }))
      .sort((a, b) => rank(a) - rank(b));
    this.build();
    this.load(true);
  }

  // ---- rows ----

  width() { return Math.max(200, this.root.clientWidth); }

  // The rows of the view. Tables that are whole are asked for again only when they have grown.
  async load(grown = false) {
    this.grown ||= grown;
    const wanted = new Map();
    for (const s of this.series) {
      const key = JSON.stringify([s.run, s.file, s.curve]);
      if (!wanted.has(key)) wanted.set(key, { run: s.run, file: s.file, curve: s.curve, axis: s.axis, columns: [] });
      const of = wanted.get(key);
      if (!of.columns.includes(s.column)) of.columns.push(s.column);
    }
    const turn = ++this.turn;
    this.stop?.abort();
    this.stop = new AbortController();
    const window = { points: Math.ceil((this.width() - gutter) * Math.min(devicePixelRatio, 2)) };
    if (this.logX || this.sticks) window.spacing = "rows";
    if (this.sticks) window.points = 20000;
    if (this.view && !this.sticks) [window.from, window.to] = this.view;
    const later = setTimeout(() => { this.busy.textContent = "…"; }, 150);
    try {
      const tables = await Promise.all([...wanted].map(async ([key, of]) => {
        const old = this.tables.find((t) => t.key === key);
        if (old?.whole && !this.grown && String(old.of.columns) === String(of.columns)) return old;
        let table = await fetchTable(of, window, this.stop.signal);
        if (this.sticks) table = tipsOf({ ...table, whole: true });
        table.overFrequency = this.overFrequency;
        table.magnitudes = of.columns.map((column) => this.series.some((s) => s.isMagnitude && s.column === column && s.file === of.file));
        return { ...table, key };
      }));
      if (turn !== this.turn) return;
      this.tables = tables;
      this.grown = false;
      this.fault = null;
    } catch (fault) {
      if (fault.name === "AbortError" || turn !== this.turn) return;
      this.fault = fault.message;
    } finally {
      clearTimeout(later);
      if (turn === this.turn) this.busy.textContent = this.fault ?? "";
    }
    this.showX();
    this.draw();
    this.read();
  }

  extent() {
    let lo = Infinity, hi = -Infinity;
    for (const t of this.tables) {
      if (t.rows === 0) continue;
      lo = Math.min(lo, this.logX && !(t.lo > 0) ? t.x.find((x) => x > 0) ?? Infinity : t.lo);
      hi = Math.max(hi, t.hi);
    }
    if (!(lo <= hi)) return this.logX ? [1, 10] : [0, 1];
    if (this.sticks) return [lo - 0.5, hi + 0.5];
    if (lo === hi) return this.logX ? [lo / 2, hi * 2] : [lo - (Math.abs(lo) / 10 || 1), hi + (Math.abs(hi) / 10 || 1)];
    return [lo, hi];
  }
  shown() { return this.view ?? this.extent(); }

  // An axis that goes to and fro cannot be drawn over; the server gives numbers of rows instead.
  xAxis() { return this.tables.some((t) => t.rowAxis) ? { name: "row number", unit: "" } : this.axis; }
  tableOf(s) { return this.tables.find((t) => t.key === JSON.stringify([s.run, s.file, s.curve])); }
  columnOf(s, table) { return table ? table.of.columns.indexOf(s.column) : -1; }

  // ---- plots ----

  build() {
    for (const p of this.plots) p.u.destroy();
    this.plots = [];
    this.rows.replaceChildren();
    const keys = [...new Set(this.series.map((s) => this.plotOf(s)))];
    keys.forEach((key, i) => this.plots.push(this.makePlot(key, i === keys.length - 1)));
    this.draw();
  }

  // All curves of a column stay together: they go where one of them is dragged.
  nameOf(s) { return `${s.file}|${s.column}`; }
  plotOf(s) { return this.movedTo.get(this.nameOf(s)) ?? s.plot; }

  // Names that are dropped here go to the plot of this key.
  takesNames(node, key) {
    node.addEventListener("dragover", (e) => { if (this.dragged) { e.preventDefault(); node.classList.add("dropping"); } });
    node.addEventListener("dragleave", () => node.classList.remove("dropping"));
    node.addEventListener("drop", (e) => {
      node.classList.remove("dropping");
      if (!this.dragged) return;
      e.preventDefault();
      this.movedTo.set(this.dragged, key());
      this.dragged = null;
      this.build();
    });
  }
  legendItem(s, value, name, draggable) {
    const item = el("span", { className: "item", draggable }, lineSample(s), name, value);
    item.ondragstart = (e) => { this.dragged = this.nameOf(s); e.dataTransfer.setData("text/plain", s.name); };
    item.ondragend = () => { this.dragged = null; };
    return item;
  }

  makePlot(key, isLast) {
    const series = this.series.filter((s) => this.plotOf(s) === key);
    const lanes = key === "levels" ? lanesOf(series) : null;
    // What has a name and a value: a lane, or else a series.
    const shown = lanes ?? series.map((s, i) => ({ bits: [i], first: s, name: s.name }));
    const unit = series.every((s) => s.unit === series[0].unit) ? series[0].unit : "";
    const logY = this.logY.get(key) ?? false;
    const toggle = el("input", { type: "checkbox", checked: logY });
    toggle.onchange = () => { this.logY.set(key, toggle.checked); this.build(); };
    const ends = endsInput(this.endsY.get(key)?.text ?? "", (range) => {
      if (range === null) this.endsY.delete(key); else this.endsY.set(key, range);
      for (const p of this.plots) if (p.key === key) { p.u.redraw(true, true); this.setView(p.u); }
    });
    const values = shown.map(() => el("span", { className: "value", textContent: "" }));
    const legend = el("div", { className: "legend" },
      ...shown.map((lane, i) => this.legendItem(lane.first, values[i], lane.name, !lanes)), lanes ? null : ends,
      stepsFor(unit) || lanes ? null : el("label", { className: "logy" }, toggle, "log"));
    const box = el("div", { className: "plot" });
    this.rows.append(legend, box);
    this.takesNames(legend, () => key);
    this.takesNames(box, () => key);
    const plot = { key, unit, series, values, legend, box, logY, lanes, shown };
    const sync = window.uPlot.sync(this.key);
    const axisStyle = { stroke: css("--ink"), font: "12px system-ui, sans-serif", labelFont: "12px system-ui, sans-serif",
      grid: { stroke: css("--grid"), width: 1 }, ticks: { stroke: css("--edge"), width: 1, size: 5 } };
    plot.u = new window.uPlot({
      width: this.width(), height: this.plotHeight(isLast, lanes), ms: 1e-3, legend: { show: false }, pxAlign: 0,
      padding: [8, 14, isLast ? 0 : 6, 0],
      scales: {
        x: { time: false, auto: false, distr: this.logX ? 3 : 1, range: () => this.shown() },
        y: { distr: logY ? 3 : 1, range: (u, lo, hi) => (lanes ? [0, 1] : this.rangeY(lo, hi, logY, this.endsY.get(key))) },
      },
      axes: [
        { ...axisStyle, size: isLast ? 28 : 6, gap: 4, labelSize: 20, labelGap: -2,
          label: isLast ? () => this.axisLabel() : null,
          space: (u, k, lo, hi) => 30 + 8 * this.ticksX(lo, hi),
          values: isLast ? (u, splits, k, space, step) => this.textsX(splits, step) : () => [] },
        { ...axisStyle, size: gutter - 22, gap: 4, labelSize: 22, labelGap: 0, scale: "y",
          ...(stepsFor(unit) && !logY ? { incrs: stepsFor(unit) } : {}),
          label: (u) => this.unitLabel(unit, u.scales.y, logY),
          values: (u, splits, k, space, step) => texts(splits, step, unit, u.scales.y, logY),
          ...(lanes ? this.laneAxis(lanes) : {}) },
      ],
      series: [{}, ...series.map((s) => ({
        label: s.name, stroke: colourOf(s), width: this.sticks ? 2.5 : 1.5, dash: this.sticks ? [] : dashes[s.run % dashes.length],
        paths: lanes ? () => null : this.sticks ? sticks(series.indexOf(s), series.length) : undefined,
        points: lanes ? { show: false } : this.sticks ? { show: true, size: 6, fill: colourOf(s), stroke: colourOf(s), filter: () => null } : { size: 5, fill: colourOf(s), stroke: colourOf(s) },
      }))],
      cursor: {
        y: false,
        drag: { x: true, y: false, dist: 4, setScale: false },
        points: { show: !this.sticks && !lanes, size: 7 },
        sync: { key: this.key, setSeries: false, scales: ["x", null],
          filters: { pub: (type) => type === "mousemove" || type === "mouseleave" } },
        bind: {
          mousedown: (u, at, go) => (e) => { if (e.shiftKey || e.button === 1) this.pan(u, e); else go(e); },
          dblclick: () => () => { clearTimeout(this.click); this.zoom(null); return null; },
        },
      },
      hooks: {
        setSelect: [(u) => this.selected(u)],
        setCursor: [(u) => this.moved(u)],
        draw: [(u) => { if (lanes) drawLanes(u, lanes); }, (u) => this.drawMarks(u)],
      },
    }, [[], ...series.map(() => [])], box);
    sync.sub(plot.u);
    this.listen(plot.u);
    return plot;
  }

  plotHeight(isLast, lanes) { return (lanes ? lanesHeight(lanes.length) : this.height) + (isLast ? 40 : 0); }
  laneAxis(lanes) { // names in the middle of their lanes, in place of numbers
    const middle = (n) => 1 - (n + 0.5) / lanes.length;
    const short = (name) => (name.length > 9 ? `${name.slice(0, 8)}…` : name);
    return { label: null, size: gutter, grid: { show: false }, ticks: { show: false },
      splits: () => lanes.map((_, n) => middle(n)).reverse(), values: () => lanes.map((lane) => short(lane.name)).reverse() };
  }

  rangeY(lo, hi, log, ends) {
    const [from, to] = this.freeRangeY(lo, hi, log);
    const least = ends?.lo ?? Math.min(from, ends?.hi ?? Infinity), most = ends?.hi ?? Math.max(to, ends?.lo ?? -Infinity);
    return !ends || (log && !(least > 0)) || !(least < most) ? [from, to] : [least, most];
  }
  freeRangeY(lo, hi, log) {
    if (lo === null || hi === null || !isFinite(lo) || !isFinite(hi)) return log ? [1, 10] : [0, 1];
    if (log) return lo === hi ? [lo / 2, hi * 2] : [lo / (hi / lo) ** 0.04, hi * (hi / lo) ** 0.04];
    if (this.sticks) { lo = Math.min(lo, 0); hi = Math.max(hi, 0); }
    const pad = (hi - lo) * 0.06 || Math.abs(hi) * 0.1 || 1;
    return [this.sticks && lo === 0 ? 0 : lo - pad, this.sticks && hi === 0 ? 0 : hi + pad];
  }

  ticksX(lo, hi) { // characters of a tick's text
    if (this.logX) return 4;
    const step = 10 ** Math.floor(Math.log10((hi - lo) / 5));
    return tickText(Math.max(Math.abs(lo), Math.abs(hi)), step, exponentFor(Math.max(Math.abs(lo), Math.abs(hi)), this.xAxis().unit)).length;
  }
  exponentX() { return exponentFor(Math.max(...this.shown().map(Math.abs)), this.xAxis().unit); }
  axisLabel() {
    const unit = this.logX ? this.xAxis().unit : unitText(this.exponentX(), this.xAxis().unit);
    return unit ? `${this.xAxis().name} (${unit})` : this.xAxis().name;
  }
  textsX(splits, step) {
    if (this.logX) return logTexts(splits);
    return splits.map((v) => (v === null ? "" : tickText(v, step, this.exponentX())));
  }
  unitLabel(unit, scale, log) {
    return log || scale.min === null ? unit : unitText(exponentFor(Math.max(Math.abs(scale.min), Math.abs(scale.max)), unit), unit);
  }

  draw() {
    const keepX = this.logX ? (x) => x > 0 && isFinite(x) : isFinite;
    for (const p of this.plots) {
      const keepY = p.logY ? (y) => y > 0 && isFinite(y) : isFinite;
      const found = p.series.map((s) => [s, this.tableOf(s)]).map(([s, t]) => [t, this.columnOf(s, t)]);
      const here = found.filter(([, j]) => j >= 0);
      const merged = merge(here, keepX, keepY);
      let k = 1;
      const data = [merged[0], ...found.map(([, j]) => (j >= 0 ? merged[k++] : merged[0].map(() => null)))];
      p.series.forEach((s, i) => {
        if (s.show) data[i + 1] = data[i + 1].map((y) => (y === undefined || y === null ? y : y > 0 ? s.show(y) : null));
      });
      p.u.batch(() => {
        p.u.setData(data, false);
        this.setView(p.u);
      });
    }
  }
  setView(u) {
    const [min, max] = this.shown();
    u.setScale("x", { min, max });
    if (u.data[0].length === 0) u.setScale("y", { min: 0, max: 1 });
  }

  resize(height) {
    this.height = height;
    this.plots.forEach((p, i) => p.u.setSize({ width: this.width(), height: this.plotHeight(i === this.plots.length - 1, p.lanes) }));
  }

  // ---- zoom ----

  zoom(view) {
    if (view) {
      const [lo, hi] = this.extent(), [from, to] = view;
      if (!(to - from > 1e-12 * Math.max(Math.abs(from), Math.abs(to)))) return; // doubles have no more digits
      view = from <= lo && to >= hi ? null : [Math.max(from, lo - (hi - lo)), Math.min(to, hi + (hi - lo))];
      if (view && this.logX) view = [Math.max(from, lo / 10), Math.min(to, hi * 10)];
    }
    this.view = view;
    for (const p of this.plots) this.setView(p.u);
    clearTimeout(this.soon);
    this.soon = setTimeout(() => this.load(), 25);
  }
  // To and from a measure that is even along the axis.
  even(x) { return this.logX ? Math.log(x) : x; }
  uneven(x) { return this.logX ? Math.exp(x) : x; }
  zoomAt(x, factor) {
    const [from, to] = this.shown().map((v) => this.even(v)), at = this.even(x);
    this.zoom([at + (from - at) * factor, at + (to - at) * factor].map((v) => this.uneven(v)));
  }
  shift(part) {
    const [from, to] = this.shown().map((v) => this.even(v)), by = (to - from) * part;
    if (this.view) this.zoom([from + by, to + by].map((v) => this.uneven(v)));
  }
  pan(u, e) {
    const start = e.clientX, [from, to] = this.shown().map((v) => this.even(v));
    const move = (m) => {
      const by = (start - m.clientX) / u.over.clientWidth * (to - from);
      this.zoom([from + by, to + by].map((v) => this.uneven(v)));
    };
    const end = () => { removeEventListener("mousemove", move); removeEventListener("mouseup", end); };
    addEventListener("mousemove", move);
    addEventListener("mouseup", end);
  }
  selected(u) {
    const { left, width } = u.select;
    if (width < 4) return;
    u.setSelect({ left: 0, top: 0, width: 0, height: 0 }, false);
    this.zoom([u.posToVal(left, "x"), u.posToVal(left + width, "x")]);
  }

  // ---- mouse ----

  listen(u) {
    u.over.addEventListener("wheel", (e) => {
      e.preventDefault();
      const left = e.clientX - u.over.getBoundingClientRect().left;
      this.zoomAt(u.posToVal(left, "x"), e.deltaY < 0 ? 0.8 : 1.25);
    }, { passive: false });
    u.over.addEventListener("mouseenter", () => this.touched(this));
    let down = null;
    u.over.addEventListener("mousedown", (e) => { down = [e.clientX, e.clientY]; }, true);
    u.over.addEventListener("click", (e) => {
      const still = down && Math.hypot(e.clientX - down[0], e.clientY - down[1]) < 4;
      if (!still || e.shiftKey || e.detail > 1) return;
      const x = u.posToVal(e.clientX - u.over.getBoundingClientRect().left, "x");
      clearTimeout(this.click);
      this.click = setTimeout(() => this.mark(this.marks.a === null ? "a" : "b", this.placed(x)), 250); // no double click came
    });
  }

  moved(u) {
    const left = u.cursor.left;
    this.hover = left === null || left < 0 ? null : this.placed(u.posToVal(left, "x"));
    this.showX();
    this.readHover();
  }
  placed(x) { // sticks stand at their places only
    if (!this.sticks) return x;
    const all = this.tables.flatMap((t) => Array.from(t.x));
    return all.reduce((best, at) => (Math.abs(at - x) < Math.abs(best - x) ? at : best), all[0] ?? x);
  }
  showX() {
    const x = this.hover === null ? "" : engineering(this.hover, this.xAxis().unit, 7);
    this.xText.textContent = `${this.xAxis().name}${x ? ` ${x}` : ""}`;
  }

  // ---- values ----

  async valuesOf(x) {
    const found = new Map();
    await Promise.all(this.tables.map(async (t) => { found.set(t.key, await valuesAt(t, x, this.sticks)); }));
    return (s) => {
      const table = this.tableOf(s), values = found.get(table?.key);
      const value = values ? values[this.columnOf(s, table)] : NaN;
      return s.show ? s.show(value) : value;
    };
  }

  // One question at a time; the last place of the mouse is answered.
  async readHover() {
    if (this.reading) { this.again = true; return; }
    this.reading = true;
    try {
      do {
        this.again = false;
        const x = this.hover;
        const value = x === null ? null : await this.valuesOf(x);
        for (const p of this.plots)
          p.shown.forEach((lane, i) => { p.values[i].textContent = value ? this.textOf(p, lane, value) : ""; });
      } while (this.again);
    } catch { /* the server is gone; the page tells so */ } finally { this.reading = false; }
  }

  textOf(p, lane, value) {
    return p.lanes ? laneText(lane, p.series.map((s) => value(s))) : engineering(value(lane.first), lane.first.unit);
  }

  mark(name, x) {
    this.marks[name] = x ?? this.hover ?? this.marks[name];
    this.markChanged();
  }
  clearMarks() {
    clearTimeout(this.click);
    this.marks = { a: null, b: null };
    this.markChanged();
  }
  markChanged() {
    for (const p of this.plots) p.u.redraw(false, false);
    this.read();
    this.touched(this);
  }

  drawMarks(u) {
    const { ctx, bbox } = u, dpr = devicePixelRatio;
    const [from, to] = this.shown();
    ctx.save();
    for (const name of ["a", "b"]) {
      const x = this.marks[name];
      if (x === null || x < from || x > to) continue;
      const left = Math.round(u.valToPos(x, "x", true));
      ctx.strokeStyle = ctx.fillStyle = css(`--${name}`);
      ctx.lineWidth = 1.5 * dpr;
      ctx.setLineDash([]);
      ctx.beginPath();
      ctx.moveTo(left, bbox.top);
      ctx.lineTo(left, bbox.top + bbox.height);
      ctx.stroke();
      const size = 15 * dpr, side = left + size > bbox.left + bbox.width ? left - size : left;
      ctx.fillRect(side, bbox.top, size, size);
      ctx.fillStyle = css("--back");
      ctx.font = `bold ${11 * dpr}px system-ui, sans-serif`;
      ctx.textAlign = "center";
      ctx.textBaseline = "middle";
      ctx.fillText(name.toUpperCase(), side + size / 2, bbox.top + size / 2 + dpr / 2);
    }
    ctx.restore();
  }

  // The table below the plots.
  async read() {
    const { a, b } = this.marks;
    this.readout.hidden = a === null && b === null;
    const turn = this.readTurn = (this.readTurn ?? 0) + 1;
    if (this.readout.hidden) return this.readout.replaceChildren();
    const none = () => null;
    let atA = none, atB = none;
    try {
      [atA, atB] = [a === null ? none : await this.valuesOf(a), b === null ? none : await this.valuesOf(b)];
    } catch { return; }
    if (turn !== this.readTurn) return;
    const text = (v, unit, digits) => (v === null ? "" : engineering(v, unit, digits));
    const row = (head, va, vb, unit, digits, last) => el("tr", {}, head,
      el("td", { className: "a", textContent: text(va, unit, digits) }),
      el("td", { className: "b", textContent: text(vb, unit, digits) }),
      el("td", { className: "difference", textContent: va === null || vb === null ? "" : engineering(vb - va, unit, digits) }),
      el("td", { textContent: last }));
    const inverse = { s: "Hz", Hz: "s" }[this.xAxis().unit];
    const d = a === null || b === null || a === b ? null : Math.abs(1 / (b - a));
    const head = el("tr", {}, ...["", "A", "B", "B − A", d === null ? "" : "1 / |B − A|"].map((textContent) => el("th", { textContent })));
    const body = [row(el("th", { textContent: this.xAxis().name }), a, b, this.xAxis().unit, 8,
      d === null ? "" : engineering(d, inverse ?? "") + (inverse === undefined && this.xAxis().unit ? ` 1/${this.xAxis().unit}` : ""))];
    for (const p of this.plots) {
      for (const lane of p.lanes ?? []) {
        const cell = (className, value) => el("td", { className, textContent: value === none ? "" : this.textOf(p, lane, value) });
        body.push(el("tr", {}, el("th", {}, lineSample(lane.first), lane.name), cell("a", atA), cell("b", atB), el("td"), el("td")));
      }
      for (const s of p.lanes ? [] : p.series)
        body.push(row(el("th", {}, lineSample(s), s.name), atA === none ? null : atA(s), atB === none ? null : atB(s), s.unit, 5, ""));
    }
    this.readout.replaceChildren(el("table", {}, el("thead", {}, head), el("tbody", {}, ...body)));
  }
}
