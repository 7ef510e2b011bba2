// The page of tnl view: what can be seen, what is chosen, and whether the files have grown.

import { css, el } from "./parts.js";
import { lanesHeight, lanesOf } from "./lanes.js";
import { Locus } from "./locus.js";
import { Group } from "./plots.js";
import { addColumn, fetchRuns, sizeGroups } from "./rows.js";

const mostCurves = 24; // of one file at once
const page = { tree: document.getElementById("tree"), groups: document.getElementById("groups"), readouts: document.getElementById("readouts"),
  notice: document.getElementById("notice"), make: document.getElementById("make"), fault: document.getElementById("fault"), filter: document.getElementById("filter") };
let runs = [];
let active = null; // the group that keys go to
const groups = new Map();
const chosen = new Map(); // "run|file" -> Set of columns
const curves = new Map(); // "run|file" -> number of the curve; none: all
const open = new Map(); // "run|file" -> the file's columns are shown
const axes = new Map(); // "run|file" -> column that the others stand over, -1: the number of the row; none: the server's
const keyOf = (run, file) => `${run}|${file.path}`;

const axisColumn = (run, file) => axes.get(keyOf(run, file)) ?? file.axis;
const drawable = (run, file) => file.columns.map((_, j) => j).filter((j) => j !== axisColumn(run, file));

// ---- choice ----

function mainFile(run) {
  const rank = (f) => ({ trns: 4, ssw: 4, ac: 3, nyquist: 2, dc: 2, "": 2, fourier: 1, startup: 0 })[f.kind] ?? 1;
  return [...run.files].sort((a, b) => rank(b) - rank(a) || b.columns.length - a.columns.length)[0];
}
// What a newcomer wants to see: the same columns of all runs, of the file that tells most.
function chooseFirst() {
  const first = runs.map(mainFile).find((f) => f);
  runs.forEach((run, r) => {
    const file = run.files.find((f) => f.path === first?.path && f.columns.length > 1) ?? mainFile(run);
    if (!file || chosen.has(keyOf(r, file)) || file.columns.length === 0) return;
    const columns = drawable(r, file);
    chosen.set(keyOf(r, file), new Set(columns.slice(0, columns.length <= 8 ? 8 : 4)));
    open.set(keyOf(r, file), true);
    // Curves and levels of one run stand over one time.
    const other = run.files.find((f) => f.digital !== file.digital && f.kind === "trns" && f.columns.length > 1);
    if (file.kind !== "trns" || !other) return;
    chosen.set(keyOf(r, other), new Set(drawable(r, other).slice(0, other.digital ? 16 : 4)));
    open.set(keyOf(r, other), true);
  });
}

function curveNumbers(run, file) {
  const key = keyOf(run, file), n = Math.max(1, file.curves);
  const one = curves.get(key);
  if (one !== undefined && one < n) return [one];
  return Array.from({ length: Math.min(n, mostCurves) }, (_, k) => k);
}

// Columns of one unit share a plot; those without one as long as their sizes are comparable.
function plotKeys() {
  const unitless = [];
  runs.forEach((run, r) => run.files.forEach((file) => {
    for (const j of chosen.get(keyOf(r, file)) ?? [])
      if (file.columns[j]?.unit === "" && !file.columns[j].level) unitless.push([file.columns[j].name, file.columns[j].size ?? 0]);
  }));
  const groupOf = sizeGroups(unitless);
  return ({ name, unit }) => unit || `${groupOf.get(name) ?? 0} without unit`;
}

// All series that are chosen, by the key of the group that they stand in.
function chosenSeries() {
  const plotOf = plotKeys();
  const found = new Map();
  const colours = new Map(); // of a group: the next one
  const manyFiles = new Set();
  const filesOf = new Map();
  runs.forEach((run, r) => run.files.forEach((file) => {
    if (!chosen.get(keyOf(r, file))?.size) return;
    const axis = axisOf(r, file), key = JSON.stringify([axis, file.digital]);
    if (!filesOf.has(key)) filesOf.set(key, new Set());
    filesOf.get(key).add(file.path);
    if (filesOf.get(key).size > 1) manyFiles.add(JSON.stringify(axis));
  }));
  runs.forEach((run, r) => run.files.forEach((file) => {
    const columns = chosen.get(keyOf(r, file));
    if (!columns?.size) return;
    const axis = axisOf(r, file), key = JSON.stringify(axis), numbers = curveNumbers(r, file);
    if (!found.has(key)) found.set(key, { axis, series: [] });
    // What tells a series from the others of its name.
    const named = (name, curve) => [name, runs.length > 1 ? run.name : "", manyFiles.has(key) ? file.path : "",
      numbers.length > 1 || file.curves > 1 ? file.labels[curve] ?? `#${curve + 1}` : ""].filter((part) => part).join(" · ");
    // Magnitude and phase of one small signal have one colour.
    const colourFor = (name, curve) => {
      const of = axis.kind === "ac" ? JSON.stringify([key, r, file.path, curve, name.replace(/^(mag|phase)_of_/, "")]) : "";
      if (of && colours.has(of)) return colours.get(of);
      const colour = colours.get(key) ?? 0;
      colours.set(key, colour + 1);
      if (of) colours.set(of, colour);
      return colour;
    };
    // Magnitudes of small signals in dB have a plot of their own.
    const plotFor = (name, plot, level) => (level ? { plot: "levels", column_name: name } : axis.kind === "ac" && name.startsWith("mag_of_") ? { isMagnitude: true, plot: "dB", linear: plot } : { plot });
    if (axis.kind === "nyquist") {
      for (const curve of numbers)
        found.get(key).series.push({ run: r, file: file.path, curve, columns: [1, 2], unit: file.columns[1].unit, plot: "locus",
          name: named(file.columns[1].name.replace(/^real_of_/, ""), curve), colour: colourFor("", curve), axis: 0 });
      return;
    }
    for (const column of [...columns].sort((a, b) => a - b)) {
      if (column >= file.columns.length || column === axisColumn(r, file)) continue;
      const { name, unit, level } = file.columns[column];
      for (const curve of numbers) {
        const colour = colourFor(name, curve);
        found.get(key).series.push({ run: r, file: file.path, curve, column, unit, colour, name: named(name, curve), ...plotFor(name, plotOf(file.columns[column]), level),
          axis: axisColumn(r, file) < 0 ? "rows" : axisColumn(r, file) });
      }
    }
  }));
  return found;
}
function axisOf(run, file) {
  // A nyquist file stands in the complex plane as long as both its parts are chosen.
  const columns = chosen.get(keyOf(run, file)), isOverFrequency = ["ac", "nyquist"].includes(file.kind) && axisColumn(run, file) === 0;
  const isLocus = file.kind === "nyquist" && isOverFrequency && columns?.has(1) && columns.has(2);
  const kind = isLocus ? "nyquist" : isOverFrequency ? "ac" : file.kind === "fourier" ? "fourier" : "";
  const { name, unit } = file.columns[axisColumn(run, file)] ?? { name: "row number", unit: "" };
  return { name, unit, kind };
}

// ---- plots ----

function plotHeight(found) {
  let plots = 0, bars = 0;
  let lanes = 0; // their height is their own
  for (const { series } of found.values()) {
    plots += new Set(series.map((s) => s.plot).filter((plot) => plot !== "levels")).size;
    bars += 1;
    const levels = series.filter((s) => s.plot === "levels");
    if (levels.length) lanes += lanesHeight(lanesOf(levels).length) + 26;
  }
  const room = page.groups.clientHeight - 12 - bars * 74 - plots * 26 - lanes;
  return Math.max(130, Math.min(680, Math.floor(room / Math.max(plots, 1))));
}

function show() {
  const found = chosenSeries(), height = plotHeight(found);
  for (const [key, group] of groups)
    if (!found.has(key)) {
      group.remove();
      groups.delete(key);
      if (active === group) active = null;
    }
  page.groups.querySelector(".hint")?.remove();
  if (found.size === 0)
    page.groups.append(el("p", { className: "hint", textContent: runs.some((r) => r.files.length) ? "Choose columns on the left." : "There are no rows yet." }));
  for (const [key, { axis, series }] of found) {
    const Kind = axis.kind === "nyquist" ? Locus : Group;
    if (!groups.has(key)) groups.set(key, new Kind(key, axis, page.groups, page.readouts, (g) => { active = g; }));
    groups.get(key).choose(series, height);
  }
  active ??= groups.values().next().value ?? null;
}

// ---- tree ----

const stateText = { running: "running", complete: "complete", stopped: "stopped", limit: "limit reached", signal: "ended by a signal" };
const counted = (n, word) => `${n.toLocaleString("en").replaceAll(",", "\u202f")} ${word}${n === 1 ? "" : "s"}`;

function aboutFile(file) {
  if (file.wanted && file.bytes_read < file.bytes) return `reading, ${Math.floor(100 * file.bytes_read / file.bytes)} %`;
  const rows = file.rows || !(file.bytes > file.bytes_read) ? counted(file.rows, "row") : "";
  return [file.kind, rows, file.curves > 1 ? counted(file.curves, "curve") : ""].filter((t) => t).join(", ");
}

function fileNode(run, file) {
  const key = keyOf(run, file), columns = chosen.get(key) ?? new Set();
  const word = page.filter.value.trim().toLowerCase();
  const list = drawable(run, file).map((j) => [file.columns[j], j])
    .filter(([c]) => !word || c.name.toLowerCase().includes(word));
  if (word && list.length === 0) return null;
  const node = el("details", { open: word !== "" || (open.get(key) ?? columns.size > 0) });
  node.ontoggle = () => { if (!word) open.set(key, node.open); };
  node.append(el("summary", {}, file.path, " ", el("span", { className: "about", textContent: aboutFile(file) })));
  if (file.problem) node.append(el("div", { className: "problem", textContent: file.problem }));
  const choose = (js, on) => {
    const set = chosen.get(key) ?? new Set();
    for (const j of js) { if (on) set.add(j); else set.delete(j); }
    chosen.set(key, set);
    drawTree();
    show();
  };
  const tools = el("div", { className: "tools" });
  if (list.length > 1) {
    tools.append(el("button", { type: "button", textContent: "all", onclick: () => choose(list.map(([, j]) => j), true) }));
    tools.append(el("button", { type: "button", textContent: "none", onclick: () => choose(list.map(([, j]) => j), false) }));
  }
  if (file.curves > 1) {
    const select = el("select", { ariaLabel: `curve of ${file.path}` });
    select.append(el("option", { value: "", textContent: file.curves > mostCurves ? `first ${mostCurves} curves` : "all curves" }));
    for (let k = 0; k < Math.min(file.curves, 1000); ++k) select.append(el("option", { value: k, textContent: `curve ${k + 1}` }));
    select.value = curves.get(key) ?? "";
    select.onchange = () => {
      if (select.value === "") curves.delete(key); else curves.set(key, Number(select.value));
      show();
    };
    tools.append(select);
  }
  if (file.columns.length > 1 && file.kind !== "fourier") {
    const select = el("select", { ariaLabel: `axis of ${file.path}` });
    file.columns.forEach((c, j) => select.append(el("option", { value: j, textContent: c.name })));
    select.append(el("option", { value: -1, textContent: "row number" }));
    select.value = axisColumn(run, file);
    select.onchange = () => {
      axes.set(key, Number(select.value));
      select.blur();
      drawTree();
      show();
    };
    tools.append(el("label", {}, "over", select));
  }
  if (tools.childNodes.length) node.append(tools);
  for (const [c, j] of list) {
    const box = el("input", { type: "checkbox", checked: columns.has(j) });
    box.dataset.column = c.name;
    box.onchange = () => choose([j], box.checked);
    node.append(el("label", {}, box, c.name, el("span", { className: "unit", textContent: c.unit })));
  }
  if (file.columns.length === 0) node.append(el("div", { className: "none", textContent: "no rows yet" }));
  return node;
}

let drawn = "";
function drawTree() {
  const now = JSON.stringify([runs, [...chosen].map(([k, v]) => [k, [...v]]), [...axes], page.filter.value]);
  if (now === drawn || page.tree.contains(document.activeElement) && document.activeElement.tagName === "SELECT") return;
  drawn = now;
  const focus = document.activeElement?.dataset?.column;
  const nodes = runs.flatMap((run, r) => {
    const bad = ["stopped", "limit", "signal"].includes(run.state) ? " bad" : "";
    const state = run.state ? el("span", { className: `state ${run.state}${bad}`, textContent: stateText[run.state] ?? run.state, title: run.message }) : null;
    return [el("h2", { title: run.path }, run.name, state),
      run.title ? el("p", { className: "title", textContent: run.title }) : null,
      run.problem ? el("p", { className: "problem", textContent: run.problem }) : null,
      ...run.files.map((file) => fileNode(r, file))];
  });
  const top = page.tree.scrollTop;
  page.tree.replaceChildren(...nodes.filter((n) => n));
  page.tree.scrollTop = top;
  if (focus) page.tree.querySelector(`input[data-column="${CSS.escape(focus)}"]`)?.focus();
}

// ---- growth ----

const versionsOf = (list) => new Map(list.flatMap((run, r) => run.files.map((f) => [keyOf(r, f), `${f.version}|${f.curves}|${f.columns.length}`])));
// Version alone says that rows came; the rest, that there are other series.
const shapeOf = (list) => {
  const plotOf = plotKeys();
  return JSON.stringify(list.map((run) => run.files.map((f) => [f.path, f.kind, f.columns.map((c) => [c.name, c.unit, plotOf(c)]), f.curves, f.labels])));
};

async function look() {
  let next;
  try {
    next = await fetchRuns();
    page.notice.hidden = true;
  } catch {
    page.notice.textContent = "The server has ended: start tnl view again. What is shown stays, zoom no longer finds new rows.";
    page.notice.hidden = false;
    return;
  }
  const before = versionsOf(runs), shape = shapeOf(runs), after = versionsOf(next);
  runs = next;
  document.title = `${runs.map((r) => r.name).join(", ")} – tnl view`;
  if (![...chosen.values()].some((set) => set.size) && !look.started) chooseFirst();
  look.started ||= chosen.size > 0;
  drawTree();
  if (shapeOf(runs) !== shape) { show(); return; }
  for (const group of groups.values())
    if (group.series.some((s) => before.get(`${s.run}|${s.file}`) !== after.get(`${s.run}|${s.file}`))) group.load(true);
}
async function lookOn() {
  if (!document.hidden) await look();
  setTimeout(lookOn, 1000);
}

// ---- page ----

page.filter.oninput = drawTree;
// A new column is chosen where it appears.
page.make.onchange = async () => {
  const text = page.make.value.trim(), before = runs.map((run) => run.files.map((f) => f.columns.length));
  page.fault.textContent = text ? await addColumn(text).catch((e) => e.message) : "";
  if (!text || page.fault.textContent) return;
  page.make.value = "";
  await look();
  runs.forEach((run, r) => run.files.forEach((file, f) => {
    if (file.columns.length <= (before[r]?.[f] ?? Infinity)) return;
    const set = chosen.get(keyOf(r, file)) ?? new Set();
    set.add(file.columns.length - 1);
    chosen.set(keyOf(r, file), set);
  }));
  drawTree();
  show();
};
addEventListener("keydown", (e) => {
  if (e.ctrlKey || e.metaKey || e.altKey || !active) return;
  if (e.target instanceof HTMLSelectElement || (e.target instanceof HTMLInputElement && e.target.type !== "checkbox")) return;
  const [from, to] = active.shown();
  const at = active.hover ?? active.uneven((active.even(from) + active.even(to)) / 2);
  const keys = {
    a: () => active.mark("a", at), b: () => active.mark("b", at), Escape: () => active.clearMarks(),
    ArrowLeft: () => active.shift(e.shiftKey ? -0.5 : -0.1), ArrowRight: () => active.shift(e.shiftKey ? 0.5 : 0.1),
    "+": () => active.zoomAt(at, 0.7), "=": () => active.zoomAt(at, 0.7), "-": () => active.zoomAt(at, 1 / 0.7),
    0: () => active.zoom(null), Home: () => active.zoom(null),
  };
  const act = keys[e.key.length === 1 ? e.key.toLowerCase() : e.key];
  if (!act) return;
  e.preventDefault();
  act();
});
new ResizeObserver(() => {
  const height = plotHeight(chosenSeries());
  for (const group of groups.values()) group.resize(height);
}).observe(page.groups);
matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => {
  for (const group of groups.values()) group.build();
});
document.documentElement.dataset.ready = css("--back") ? "yes" : "no";
lookOn();
