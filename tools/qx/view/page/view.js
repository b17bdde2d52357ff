// The page as a whole: what is shown, where it stands, and what is told beside it.
import {askFrame, askState} from "./ask.js";
import {Numbers} from "./numbers.js";
import {Player} from "./player.js";
import {Readout} from "./readout.js";
import {Side} from "./side.js";
import {Stage} from "./stage.js";
import {showFaults, showNotes, showStatus} from "./told.js";
import {Wipe} from "./wipe.js";

const POLL = 400, POLL_UNSEEN = 2000;  // milliseconds between two looks at the files
const get = (id) => document.getElementById(id);

let sources = [];
let numbers = new Numbers([[0, 0, 1]]);
let index = 0;           // of the frame of A
let other = null;        // number of the frame of B, where that is another one
let before = null;       // the frame of A as it was before its files were saved
let compare = "none", lastCompare = null;
let reached = true;

const sides = [new Side(0, update), new Side(1, update)];
const readout = new Readout([get("pixel-a"), get("pixel-b")]);
const stage = new Stage(get("canvas"), {
  pointed: (pixel) => readout.point(pixel),
  zoomed: (scale) => { get("zoom").value = `${Number((scale * 100).toPrecision(3))} %`; },
});
const wipe = new Wipe(get("wipe"), (at) => {
  stage.wipe = at;
  stage.draw();
});
const player = new Player(playStep, () => {
  get("play").setAttribute("aria-pressed", player.plays);
  get("play").setAttribute("aria-label", player.plays ? "Pause" : "Play");
});

// What is shown.

const ofA = () => `0:${numbers.at(index)}`;

function ofB() {
  if (compare === "frame") return `0:${other}`;
  const own = new Numbers(sources[1].frames);
  return `1:${own.at(own.indexOf(numbers.at(index)))}`;
}

const frameB = () => (compare === "none" ? null : compare === "before" ? before : sides[1].frame);

function update() {
  const frames = [sides[0].frame, frameB()];
  stage.show(frames[0]?.bitmap ?? null, frames[1]?.bitmap ?? null);
  readout.show(frames);
  get("wipe").hidden = frames[1] === null;
  label(get("label-a"), "A", frames[0], frames[1] !== null);
  label(get("label-b"), "B", frames[1], frames[1] !== null);
  get("facts").textContent = frames[0] === null ? "" : factsOf(frames[0]);
  const faults = faultsNow();
  get("canvas").classList.toggle("old", faults.length > 0);
  showFaults(get("faults"), faults);
  showStatus(get("status"), {reached, busy: sides.some((side) => side.busy), faults: faults.length});
}

function label(place, letter, frame, shown) {
  place.hidden = !shown || frame === null;
  if (frame === null) return;
  const [source, number] = frame.of.split(":");
  const words = [letter, sources.length > 1 ? nameOf(sources[source].name) : null,
                 sources[source].kind === "picture" ? null : `frame ${number}`,
                 frame === before ? "before the last save" : null];
  place.textContent = words.filter((word) => word !== null).join(" \u00b7 ");
}

const nameOf = (path) => path.split("/").at(-1);
const FULL = {8: "0 to 255", 16: "0 to 32768", 32: "float, full is 1"};
const factsOf = ({width, height, depth, alpha, light}) =>
  [`${width} \u00d7 ${height}`, `${depth} bit, ${FULL[depth]}`, alpha ? "alpha" : null, light ? "light" : null]
    .filter((word) => word !== null).join(" \u00b7 ");

function faultsNow() {
  const shown = compare === "file" ? sources : sources.slice(0, 1);
  const faults = shown.flatMap((source) => source.faults);
  const ofFrames = sides.filter((side) => side.fault !== null).map((side) => side.fault.message);
  return [...new Set([...faults, ...ofFrames])];
}

// Where it stands.

function goTo(to) {
  index = Math.min(Math.max(to, 0), numbers.count - 1);
  before = null;
  showPlace();
  sides[0].want(ofA());
  if (compare === "file") sides[1].want(ofB());
}

function showPlace() {
  get("slider").value = index;
  get("slider").setAttribute("aria-valuetext", `frame ${numbers.at(index)}`);
  get("number").value = numbers.at(index);
}

function step(by) {
  player.stop();
  goTo((index + by + numbers.count) % numbers.count);
}

// The next frame is made while this one is seen; a fault ends it.
async function playStep(due, goesOn) {
  const next = (index + 1) % numbers.count, of = `0:${numbers.at(next)}`;
  const frame = await askFrame(0, of).catch((fault) => fault);
  await due;
  if (!goesOn()) return false;
  if (frame.bitmap === undefined) {
    if (frame.status === 409) return true;
    goTo(next);
    return false;
  }
  index = next;
  before = null;
  showPlace();
  sides[0].wanted = of;
  sides[0].show(frame);
  if (compare === "file") await sides[1].want(ofB());
  return true;
}

function setCompare(to) {
  if (to === "file" && sources.length < 2) to = "frame";
  compare = to;
  if (to !== "none") lastCompare = to;
  other ??= numbers.at(index);
  get("compare").value = to;
  get("other-field").hidden = to !== "frame";
  get("other").value = other;
  sides[1].leave();
  if (to === "frame" || to === "file") sides[1].want(ofB());
  update();
}

// What the command tells: the sources as their files are now, and whether a frame that is shown is an old one.

function take(state) {
  const known = JSON.stringify(sources[0]?.frames);
  const number = numbers.at(index);
  sources = state.sources;
  if (JSON.stringify(sources[0].frames) !== known && sources[0].faults.length === 0) {
    numbers = new Numbers(sources[0].frames);
    get("slider").max = numbers.count - 1;
    get("range").textContent =
      numbers.count > 1 ? `of ${numbers.first}\u2013${numbers.last}, ${Number(sources[0].rate.toFixed(3))}/s` : "";
    for (const id of ["slider", "number", "back", "play", "forth"]) get(id).disabled = numbers.count === 1;
    goTo(known === undefined ? 0 : numbers.indexOf(number));
  }
  get("compare").querySelector("[value=file]").disabled = sources.length < 2;
  get("name").textContent = sources.map(({name}) => nameOf(name)).join(" | ");
  get("name").title = sources.map(({name}) => name).join("\n");
  document.title = `${sources.map(({name}) => nameOf(name)).join(" | ")} \u2013 qx view`;
  showNotes(get("notes"), sources.flatMap(({notes}) => notes));
}

function lookAtFiles(stamps) {
  for (const side of sides) {
    const stamp = stamps[side.wanted];
    const saved = side === sides[0] && !side.busy && stamp !== undefined && stamp !== side.stamp;
    if (saved && side.frame?.of === side.wanted && side.fault === null) before = side.frame;
    side.look(stamp);
  }
  if (sides[0].wanted === null && sources[0].faults.length === 0) goTo(index);
}

async function poll() {
  const shown = sides.map((side) => side.wanted).filter((of) => of !== null);
  const state = await askState(shown).catch(() => null);
  reached = state !== null;
  if (reached) {
    take(state);
    lookAtFiles(state.stamps);
  } else {
    player.stop();
  }
  update();
  setTimeout(poll, document.hidden ? POLL_UNSEEN : POLL);
}

// Buttons and keys.

const acts = {
  back: () => step(-1), forth: () => step(1), play: () => player.toggle(sources[0].rate),
  larger: () => stage.larger(), smaller: () => stage.smaller(), whole: () => stage.fit(), pixels: () => stage.pixels(),
};
for (const [id, act] of Object.entries(acts)) get(id).addEventListener("click", act);
get("slider").addEventListener("input", (event) => {
  player.stop();
  goTo(event.target.valueAsNumber);
});
get("number").addEventListener("change", (event) => {
  player.stop();
  goTo(numbers.indexOf(event.target.valueAsNumber || 0));
});
get("other").addEventListener("change", (event) => {
  other = numbers.at(numbers.indexOf(event.target.valueAsNumber || 0));
  setCompare("frame");
});
get("compare").addEventListener("change", (event) => setCompare(event.target.value));
get("behind").addEventListener("change", (event) => {
  stage.behind = event.target.value;
  stage.draw();
});

const toggleWipe = () => setCompare(compare === "none" ? lastCompare ?? "file" : "none");
const keys = {
  ArrowLeft: acts.back, ArrowRight: acts.forth, " ": acts.play, "+": acts.larger, "=": acts.larger, "-": acts.smaller,
  0: acts.whole, 1: acts.pixels, w: toggleWipe,
};
document.addEventListener("keydown", (event) => {
  const {target, key} = event;
  const writes = target.matches("input[type=number], select");
  const isOwn = (target.matches("button, summary") && key === " ") || (target.matches("input") && key.startsWith("Arrow"));
  if (writes && key === "Enter") get("canvas").focus();  // so that keys are for the frame again
  if (writes || isOwn || event.ctrlKey || event.altKey || event.metaKey || keys[key] === undefined) return;
  if (numbers.count === 1 && [acts.back, acts.forth, acts.play].includes(keys[key])) return;
  event.preventDefault();
  keys[key]();
});

poll();
