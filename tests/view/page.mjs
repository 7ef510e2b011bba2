// A browser over the page: rows with known values are drawn, zoomed, measured, chosen, and followed while they grow.
// Works in the current folder, where it leaves screenshots. Arguments: tnl, a package.json beside node_modules, browser.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { appendFileSync, mkdirSync, renameSync, rmdirSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";

const [tnl, packages, executablePath] = process.argv.slice(2);
const { chromium } = createRequire(packages)("playwright-core");
const patience = 60000; // ms; the machine may be busy

// ---- rows: v = slope t, in run one with a sample of 25 V, i = sin(2 pi 5 t); a stick at harmonic 3 ----

const time = { name: "time", unit: "s" }, volts = { name: "v", unit: "V" }, amps = { name: "i", unit: "A" };
function record(folder, state, files) {
  mkdirSync(folder, { recursive: true });
  writeFileSync(`${folder}/run.json`, JSON.stringify({ version: "0", deck: "/d.in", title: `rows of ${folder}`, state, files }));
}
function makeRun(name, slope) {
  record(`${name}.run`, "complete", [
    { path: "wave.dat", kind: "trns", columns: [time, volts, amps], rows: 0, curves: 0 },
    { path: "fourier.dat", kind: "fourier", columns: [{ name: "harmonic", unit: "" }, volts], rows: 0, curves: 0 }]);
  let wave = "";
  const n = 20000;
  for (let k = 0; k <= n; ++k) {
    const t = k / n;
    wave += `${t} ${k === 6667 && name === "one" ? 25 : slope * t} ${Math.sin(2 * Math.PI * 5 * t)}\n`;
  }
  writeFileSync(`${name}.run/wave.dat`, wave);
  let sticks = "";
  for (let h = 0; h < 10; ++h) sticks += `${h - 0.001} 0\n${h} ${h === 3 ? 7.5 : 0}\n${h + 0.001} 0\n`;
  writeFileSync(`${name}.run/fourier.dat`, sticks);
}
makeRun("one", 10);
makeRun("two", 5);
const growing = [{ path: "live.dat", kind: "trns", columns: [time, volts], rows: 0, curves: 0 }];
record("three.run/.partial", "running", growing);
writeFileSync("three.run/.partial/live.dat", "0 0\n1 1\n2 ");

// A first-order low pass with its corner at 1 kHz, two gains, and the loop 4 / (1 + i f/1000)^3.
const hertz = { name: "frequency", unit: "Hz" };
record("ac.run", "complete", [
  { path: "ac.dat", kind: "ac", columns: [hertz, { name: "mag_of_x", unit: "V" }, { name: "phase_of_x", unit: "deg" }], rows: 0, curves: 2,
    sweeps: [{ name: "k_of_G1", unit: "", values: [1, 100] }] },
  { path: "n.dat", kind: "nyquist", columns: [hertz, { name: "real_of_l", unit: "" }, { name: "imag_of_l", unit: "" }], rows: 0, curves: 0 }]);
const decades = Array.from({ length: 81 }, (_, k) => 10 ** (1 + k / 20));
writeFileSync("ac.run/ac.dat", [1, 100].map((gain) => decades.map((f) =>
  `${f} ${gain / Math.hypot(1, f / 1e3)} ${-Math.atan(f / 1e3) * 180 / Math.PI}\n`).join("")).join("\n"));
writeFileSync("ac.run/n.dat", decades.map((f) => {
  const m = 4 / Math.hypot(1, f / 1e3) ** 3, a = -3 * Math.atan(f / 1e3);
  return `${f} ${m * Math.cos(a)} ${m * Math.sin(a)}\n`;
}).join(""));

// ---- server and browser ----

const servers = [];
async function serve(...runs) {
  const server = spawn(tnl, ["view", ...runs, "--no-open", "--timeout", "300"], { stdio: ["ignore", "pipe", "inherit"] });
  servers.push(server);
  const address = await new Promise((resolve, reject) => {
    server.stdout.once("data", (text) => resolve(String(text).trim()));
    server.once("exit", (status) => reject(new Error(`tnl view ended with ${status}`)));
  });
  return { server, address };
}
const browser = await chromium.launch({ executablePath, args: ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
  "--no-first-run", "--disable-background-networking", "--disable-component-update", "--disable-sync"] });

async function open(address, colorScheme = "light") {
  const page = await browser.newPage({ viewport: { width: 1280, height: 800 }, colorScheme });
  page.setDefaultTimeout(patience);
  page.faults = [];
  page.asked = [];
  page.on("console", (m) => { if (m.type() === "error") page.faults.push(m.text()); });
  page.on("pageerror", (e) => page.faults.push(e.stack));
  page.on("request", (r) => page.asked.push(r.url()));
  await page.goto(address);
  await page.waitForSelector(".u-over");
  return page;
}
// Where a part of the first plot's width is, on the screen.
async function place(page, part, plot = 0) {
  const box = await page.locator(".u-over").nth(plot).boundingBox();
  return [box.x + box.width * part, box.y + box.height / 2];
}
const number = (text) => {
  const [, digits, prefix] = /(−?[\d.]+(?:e−?\d+)?)\s*([fpnµmkMG]?)/.exec(text);
  return Number(digits.replaceAll("−", "-")) * { f: 1e-15, p: 1e-12, n: 1e-9, "µ": 1e-6, m: 1e-3, "": 1, k: 1e3, M: 1e6, G: 1e9 }[prefix];
};
const near = (a, b, by, what) => assert.ok(Math.abs(a - b) <= by, `${what}: ${a}, not ${b} within ${by}`);
const until = (page, test, arg) => page.waitForFunction(test, arg, { timeout: patience });
// The axis under the mouse at a part of the plot.
async function axisAt(page, part, plot = 0) {
  await page.mouse.move(...await place(page, part + 0.01, plot));
  await page.mouse.move(...await place(page, part, plot));
  await page.evaluate(() => new Promise((seen) => requestAnimationFrame(() => requestAnimationFrame(seen))));
  const text = page.locator(".group .x").first();
  await until(page, (n) => /\d/.test(document.querySelectorAll(".group .x")[n].textContent), 0);
  return number((await text.textContent()).replace(/^\D+/, ""));
}
async function waitForAxis(page, part, value, by, what, plot = 0) {
  let x;
  for (const start = Date.now(); Date.now() - start < patience; await page.waitForTimeout(100)) {
    x = await axisAt(page, part, plot);
    if (Math.abs(x - value) <= by) return;
  }
  near(x, value, by, what);
}
// Pixels of a plot's canvas that have the colour of a series, the highest and the lowest of them as parts of the height.
function drawn(page, plot, colour) {
  return page.evaluate(([n, name]) => {
    const canvas = document.querySelectorAll(".plot canvas")[n], { width, height } = canvas;
    const text = getComputedStyle(document.documentElement).getPropertyValue(name).trim();
    const wanted = [1, 3, 5].map((i) => parseInt(text.slice(i, i + 2), 16));
    const { data } = canvas.getContext("2d").getImageData(0, 0, width, height);
    let count = 0, top = height, bottom = 0;
    for (let i = 0; i < data.length; i += 4)
      if (data[i + 3] > 200 && wanted.every((w, k) => Math.abs(w - data[i + k]) < 12)) {
        ++count;
        top = Math.min(top, Math.floor(i / 4 / width));
        bottom = Math.max(bottom, Math.floor(i / 4 / width));
      }
    return { count, top: top / height, bottom: bottom / height };
  }, [plot, colour]);
}
async function waitForDrawn(page, plot, colour, least = 200) {
  let seen;
  for (const start = Date.now(); Date.now() - start < patience; await page.waitForTimeout(100)) {
    seen = await drawn(page, plot, colour);
    if (seen.count >= least) return seen;
  }
  assert.fail(`plot ${plot} has ${seen.count} pixels of ${colour}`);
}

const steps = [];
const step = (what, act) => steps.push([what, act]);
let page, one;

// t, a reference of 12, a duty cycle, and the same twice, none with a unit; the first row is a guess.
record("four.run", "stopped", [{ path: "wave.dat", kind: "trns", rows: 0, curves: 0, begins_with_guess: true,
  columns: [time, { name: "vref", unit: "" }, { name: "duty", unit: "" }, { name: "v", unit: "V" }, { name: "i", unit: "A" }] }]);
writeFileSync("four.run/wave.dat", Array.from({ length: 500 }, (_, k) => (k === 0 ? "0 0 0 0 0\n"
  : `${k / 500} ${12 + 0.5 * Math.sin(k / 10)} ${0.2 + 0.1 * Math.sin(k / 20)} ${5 + k / 500} 2\n`)).join(""));

step("columns without a unit and of other sizes stand apart, and a guess is no part of them", async () => {
  const four = await serve("four.run");
  const other = await open(four.address);
  await until(other, () => document.querySelectorAll(".plot").length === 4);
  const items = () => other.locator(".legend").allTextContents();
  assert.ok((await items())[0].startsWith("vref") && (await items())[1].startsWith("duty"), String(await items()));
  const { bottom } = await waitForDrawn(other, 0, "--s1", 50);
  assert.ok(bottom > 0.6, `vref fills its plot, and is no wave at the top over a guess of 0: ${bottom}`);
  await other.screenshot({ path: "apart.png" });

  await other.fill("#make", "p = v*i");
  await other.keyboard.press("Enter");
  await until(other, () => [...document.querySelectorAll(".legend .item")].some((n) => n.textContent.startsWith("p")));
  await until(other, () => document.querySelector("#tree").textContent.includes("pW"));
  await other.fill("#make", "v - nosuch");
  await other.keyboard.press("Enter");
  await until(other, () => document.querySelector("#fault").textContent.includes("no file has all columns"));

  const n = await other.locator(".plot").count();
  await other.dragAndDrop(".legend .item:has-text('duty')", ".plot >> nth=0");
  await until(other, (plots) => document.querySelectorAll(".plot").length === plots - 1, n);
  assert.ok(/vref.*duty/.test((await items())[0]), "duty stands beside vref");
  await other.dragAndDrop(".legend .item:has-text('duty')", ".bar");
  await until(other, (plots) => document.querySelectorAll(".plot").length === plots, n);

  await other.locator(".yrange").nth(0).fill("0:14");
  await other.keyboard.press("Enter");
  const seen = Date.now();
  while ((await drawn(other, 0, "--s1")).bottom > 0.3 && Date.now() - seen < patience) await other.waitForTimeout(100);
  assert.ok((await drawn(other, 0, "--s1")).bottom < 0.3, "12 of 0 .. 14 is in the upper part");
  await other.locator(".yrange").nth(0).fill("5");
  await other.keyboard.press("Enter");
  await until(other, () => document.querySelector(".yrange").classList.contains("bad"));
  await other.screenshot({ path: "made.png" });
  assert.deepEqual(other.faults.filter((f) => !f.includes("400")), []);
  await other.close();
  four.server.kill();
});

// Beside v = t: a clock of 10 Hz, a number that counts its rises and is unknown before 0.25 s, a lone level.
const level = (name) => ({ name, unit: "", level: true });
record("mixed.run", "complete", [
  { path: "wave.dat", kind: "trns", columns: [time, volts], rows: 0, curves: 0 },
  { path: "logic.dat", kind: "trns", digital: true, offset: 2, rows: 0, curves: 0,
    columns: [time, level("clk"), level("q0"), level("q1"), level("ready")] }]);
writeFileSync("mixed.run/wave.dat", Array.from({ length: 101 }, (_, k) => `${k / 100} ${k / 100}\n`).join(""));
{
  const counted = (k) => (k < 5 ? [2, 2] : [(k - 5) / 2 & 1, (k - 5) / 4 & 1].map(Math.floor));
  const row = (t, k) => `${t} ${[k % 2, ...counted(k), k > 10 ? 1 : 0].map((v, j) => v + 2 * j).join(" ")}\n`;
  let text = row(0, 0);
  for (let k = 1; k <= 20; ++k) text += row(k / 20, k - 1) + row(k / 20, k);
  writeFileSync("mixed.run/logic.dat", text);
}
step("levels stand on lanes below the curves of their run, over one time", async () => {
  const { server, address } = await serve("mixed.run");
  const mixed = await open(address);
  await until(mixed, () => document.querySelectorAll(".plot").length === 2);
  assert.deepEqual((await mixed.locator(".legend .item").allTextContents()).map((t) => t.trim()), ["v", "clk", "q[1:0]", "ready"]);
  await waitForDrawn(mixed, 1, "--s2"); // the clock
  await waitForDrawn(mixed, 1, "--s3"); // the number
  await waitForDrawn(mixed, 1, "--grid", 1500); // the ground of the hatching where it is unknown
  const values = async (part) => {
    await waitForAxis(mixed, part, part, 0.005, "under the mouse", 1);
    await mixed.waitForTimeout(300);
    return (await mixed.locator(".legend .value").allTextContents()).map((t) => t.trim());
  };
  assert.deepEqual((await values(0.12)).slice(1), ["0", "x", "0"]);
  const [v, ...rest] = await values(0.675);
  near(number(v), 0.675, 0.01, "v");
  assert.deepEqual(rest, ["1", "0", "1"]);
  assert.deepEqual((await values(0.575)).slice(1), ["1", "3", "1"]);
  await mixed.keyboard.press("a");
  await until(mixed, () => [...document.querySelectorAll(".readout tr")].some((row) => row.textContent.startsWith("q[1:0]3")));
  await mixed.screenshot({ path: "lanes.png" });
  assert.deepEqual(mixed.faults, []);
  await mixed.close();
  const dark = await open(address, "dark");
  await until(dark, () => document.querySelectorAll(".plot").length === 2);
  await dark.screenshot({ path: "lanes_dark.png" });
  await dark.close();
  server.kill();
});

step("the series of two runs are drawn, one plot a unit", async () => {
  one = await serve("one.run", "two.run");
  page = await open(one.address);
  await until(page, () => document.querySelectorAll(".plot").length === 2);
  assert.deepEqual(await page.locator(".legend .item").allTextContents(), ["v · one", "v · two", "i · one", "i · two"]);
  await waitForDrawn(page, 0, "--s1"); // v of one, v of two; i of both alike, so that the second covers the first
  await waitForDrawn(page, 0, "--s3");
  await waitForDrawn(page, 1, "--s4");
});

step("a single sample among twenty thousand reaches the top of the plot", async () => {
  const { top } = await waitForDrawn(page, 0, "--s1");
  assert.ok(top < 0.15, `the highest pixel is at ${top}`);
});

step("legends tell the values at the cursor", async () => {
  await waitForAxis(page, 0.5, 0.5, 0.002, "the middle");
  const x = await axisAt(page, 0.5);
  await until(page, () => [...document.querySelectorAll(".legend .value")].every((v) => /\d/.test(v.textContent)));
  await page.waitForTimeout(1000); // the server is asked for them
  const values = (await page.locator(".legend .value").allTextContents()).map(number);
  near(values[0], 10 * x, 0.01, "v of one");
  near(values[1], 5 * x, 0.01, "v of two");
  near(values[2], Math.sin(2 * Math.PI * 5 * x), 0.01, "i of one");
  await page.screenshot({ path: "light.png" });
});

step("a drag zooms all plots", async () => {
  await page.mouse.move(...await place(page, 0.2));
  await page.mouse.down();
  await page.mouse.move(...await place(page, 0.4), { steps: 4 });
  await page.mouse.move(...await place(page, 0.6), { steps: 4 });
  await page.mouse.up();
  await waitForAxis(page, 0.5, 0.4, 0.005, "the middle of 0.2 .. 0.6");
  await waitForAxis(page, 0.25, 0.3, 0.005, "in the other plot", 1);
});

step("cursors A and B tell differences", async () => {
  await waitForAxis(page, 0.25, 0.3, 0.005, "a quarter");
  await page.keyboard.press("a");
  await waitForAxis(page, 0.75, 0.5, 0.005, "three quarters");
  await page.keyboard.press("b");
  await until(page, () => [...document.querySelectorAll(".readout .difference")].filter((d) => /\d/.test(d.textContent)).length === 5);
  const cell = async (row, column) => number(await page.locator(".readout tbody tr").nth(row).locator("td").nth(column).textContent());
  const a = await cell(0, 0), b = await cell(0, 1);
  near(a, 0.3, 0.005, "A");
  near(b, 0.5, 0.005, "B");
  near(await cell(0, 2), b - a, 1e-6, "B - A");
  near(await cell(0, 3), 1 / (b - a), 0.001, "1 / (B - A)");
  near(await cell(1, 2), 10 * (b - a), 0.001, "difference of v of one");
  near(await cell(2, 2), 5 * (b - a), 0.001, "difference of v of two");
  await waitForDrawn(page, 0, "--a", 100);
  await waitForDrawn(page, 1, "--b", 100);
  await page.screenshot({ path: "cursors.png" });
  await page.keyboard.press("Escape");
  await until(page, () => document.querySelector(".readout").hidden);
});

step("a click sets A, a second one B", async () => {
  await page.mouse.click(...await place(page, 0.3));
  await until(page, () => /\d/.test(document.querySelector(".readout .a")?.textContent));
  await page.mouse.click(...await place(page, 0.6));
  await until(page, () => /\d/.test(document.querySelector(".readout .b")?.textContent));
  await page.keyboard.press("Escape");
});

step("keys and a shifted drag move the view, wheel and double click zoom", async () => {
  await axisAt(page, 0.5);
  await page.keyboard.press("ArrowRight");
  await waitForAxis(page, 0.5, 0.44, 0.005, "a tenth further");
  await page.keyboard.down("Shift");
  await page.mouse.move(...await place(page, 0.5));
  await page.mouse.down();
  await page.mouse.move(...await place(page, 0.6), { steps: 4 });
  await page.mouse.up();
  await page.keyboard.up("Shift");
  await waitForAxis(page, 0.5, 0.4, 0.006, "back by a tenth");
  await page.mouse.wheel(0, -100); // a fifth less, around the middle
  await waitForAxis(page, 0, 0.24, 0.008, "the left edge");
  await page.mouse.dblclick(...await place(page, 0.5));
  await waitForAxis(page, 0.5, 0.5, 0.003, "all again");
  await page.waitForTimeout(500);
  assert.ok(await page.locator(".readout").isHidden(), "a double click sets no cursor");
});

step("a column that is switched off goes, and comes back", async () => {
  for (const box of await page.locator("input[data-column=i]").all()) await box.uncheck();
  await until(page, () => document.querySelectorAll(".plot").length === 1);
  for (const box of await page.locator("input[data-column=i]").all()) await box.check();
  await until(page, () => document.querySelectorAll(".plot").length === 2);
});

step("a Fourier file has sticks over an axis of its own", async () => {
  const file = page.locator("details", { hasText: "fourier.dat" }).first();
  await file.locator("summary").click();
  await file.locator("input[data-column=v]").check();
  await until(page, () => document.querySelectorAll(".group").length === 2);
  await page.mouse.move(...await place(page, 3.4 / 10, 2)); // the axis is -0.5 .. 9.5; the nearest stick counts
  await until(page, () => document.querySelectorAll(".group .x")[1].textContent === "harmonic 3");
  await until(page, () => document.querySelectorAll(".group")[1].querySelector(".value").textContent === "7.5 V");
  await page.screenshot({ path: "fourier.png" });
});

step("nothing was asked for elsewhere, and nothing went wrong", async () => {
  assert.deepEqual(page.asked.filter((url) => !url.startsWith(one.address)), []);
  assert.deepEqual(page.faults, []);
});

step("the dark page is dark", async () => {
  const dark = await open(one.address, "dark");
  await waitForDrawn(dark, 0, "--s1");
  const [r, g, b] = (await dark.evaluate(() => getComputedStyle(document.body).backgroundColor)).match(/\d+/g).map(Number);
  assert.ok(r + g + b < 150, `background ${r} ${g} ${b}`);
  await dark.screenshot({ path: "dark.png" });
  await dark.close();
});

step("small signals are a Bode plot: dB above degrees over the logarithm of frequency", async () => {
  const { address } = await serve("ac.run");
  const bode = await open(address);
  await waitForDrawn(bode, 0, "--s1");
  const texts = await bode.locator(".legend .item").allTextContents();
  assert.deepEqual(texts.map((t) => t.replace(/ ?[−\d.]+ (dB|deg)$/, "").trim()),
    ["mag_of_x · k_of_G1 = 1", "mag_of_x · k_of_G1 = 100", "phase_of_x · k_of_G1 = 1", "phase_of_x · k_of_G1 = 100"]);
  assert.equal(await bode.locator(".plot").count(), 2);
  await bode.mouse.move(...await place(bode, 0.5));
  await until(bode, () => [...document.querySelectorAll(".legend .value")].every((v) => v.textContent !== ""));
  const [low, high, phase] = (await bode.locator(".legend .value").allTextContents()).map((t) => Number(t.replace("−", "-").split(" ")[0]));
  near(low, -3.01, 0.2, "the corner, in dB"); // the middle of 10 Hz .. 100 kHz
  near(high - low, 40, 1e-3, "a gain of 100");
  near(phase, -45, 1.5, "its phase");
  await bode.screenshot({ path: "bode.png" });
  await bode.locator(".bar input").first().uncheck();
  await until(bode, () => document.querySelector(".legend .value") && !document.querySelector(".legend").textContent.includes("dB"));
  assert.equal(await bode.locator(".legend .logy").count(), 1);

  // Both parts of a nyquist file make a curve in the complex plane.
  const file = bode.locator("#tree details").nth(1);
  await file.locator("summary").click();
  await file.locator("button", { hasText: "all" }).click();
  await bode.waitForSelector("canvas.locus");
  await until(bode, (colour) => {
    const canvas = document.querySelector("canvas.locus");
    const probe = document.createElement("canvas").getContext("2d");
    probe.fillStyle = getComputedStyle(document.documentElement).getPropertyValue(colour).trim();
    probe.fillRect(0, 0, 1, 1);
    const [r, g, b] = probe.getImageData(0, 0, 1, 1).data;
    const { data } = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height);
    for (let i = 0; i < data.length; i += 4)
      if (Math.abs(data[i] - r) + Math.abs(data[i + 1] - g) + Math.abs(data[i + 2] - b) < 12) return true;
    return false;
  }, "--warn"); // the mark at -1
  const box = await bode.locator("canvas.locus").boundingBox();
  let said = "";
  for (let part = 0.2; part < 0.95 && !said.startsWith("l: frequency"); part += 0.05) {
    await bode.mouse.move(box.x + box.width * part, box.y + box.height * 0.5);
    said = (await bode.locator(".group .x").allTextContents()).find((t) => t.startsWith("l: frequency")) ?? "";
  }
  assert.match(said, /^l: frequency [\d.]+ k?Hz, −?[\d.]+(e−?\d+)? [−+] j [\d.]+/);
  await bode.screenshot({ path: "nyquist.png" });
  assert.deepEqual(bode.faults, []);
  await bode.close();
});

step("a run that goes on is followed to its end", async () => {
  const { address } = await serve("three.run");
  const live = await open(address);
  const shows = (text) => until(live, (t) => document.getElementById("tree").textContent.replaceAll("\u202f", " ").includes(t), text);
  await shows("2 rows");
  await shows("running");
  appendFileSync("three.run/.partial/live.dat", "2\n3 3\n");
  await shows("4 rows");
  await waitForAxis(live, 0.5, 1.5, 0.02, "the middle of 0 .. 3");
  appendFileSync("three.run/.partial/live.dat", "4 4\n");
  record("three.run/.partial", "complete", growing);
  renameSync("three.run/.partial/live.dat", "three.run/live.dat");
  renameSync("three.run/.partial/run.json", "three.run/run.json");
  rmdirSync("three.run/.partial");
  await shows("5 rows");
  await shows("complete");
  await waitForAxis(live, 0.5, 2, 0.02, "the middle of 0 .. 4");
  assert.deepEqual(live.faults, []);
  await live.close();
});

step("the page says when the server is gone", async () => {
  one.server.kill("SIGINT");
  const status = await new Promise((resolve) => one.server.once("exit", resolve));
  assert.equal(status, 130);
  await until(page, () => !document.getElementById("notice").hidden);
});

let status = 0;
try {
  for (const [what, act] of steps) {
    await act();
    console.log(`ok: ${what}`);
  }
} catch (fault) {
  console.log(fault.stack, page?.faults ?? "");
  await page?.screenshot({ path: "fault.png" }).catch(() => {});
  status = 1;
} finally {
  await browser.close();
  for (const server of servers) server.kill("SIGTERM");
}
process.exit(status);
