// What the card tells is fetched once as a whole and then kept up to date by events; the drawing is fetched from the
// index on up to which it is here.
import { Picture } from "./picture.js";

const $ = id => document.getElementById(id);
const token = document.querySelector("meta[name=token]").content;
const picture = new Picture($("done"), $("beam"));
let epoch = null, stream = null, latest = "", hasEnded = false, attempt = 0;
let isFetching = false, wanted = null;
let run = null, lists = { rows: [] }, ports = [], shown = null, shownFirst = 0, commands = null;

// ---- What comes ----

const AGAIN = 1000;  // milliseconds

async function get(path) {
  const answer = await fetch(path);
  if (!answer.ok) throw new Error((await answer.text()).trim());
  return answer;
}

async function connect() {
  close();
  const mine = ++attempt;
  if (document.hidden || hasEnded) return;
  try {
    const state = await (await get("state")).json();
    if (mine !== attempt) return;
    if (epoch !== null && state.epoch !== epoch) {  // another card, which takes another token
      location.reload();
      return;
    }
    ({ epoch, latest } = state);
    picture.beamWidth = state.beam;
    setText($("serial"), state.serial);
    for (const name of Object.keys(sections)) sections[name](state[name]);
    listen();
  } catch {
    away();
    setTimeout(() => mine === attempt && connect(), AGAIN);
  }
}

function listen() {
  stream = new EventSource(`events?after=${encodeURIComponent(latest)}`);
  stream.onopen = () => say("Connected", "here");
  stream.onerror = () => {
    away();
    if (stream && stream.readyState === EventSource.CLOSED) setTimeout(connect, AGAIN);
  };
  for (const name of Object.keys(sections)) {
    stream.addEventListener(name, event => sections[name](JSON.parse(event.data)));
  }
  stream.addEventListener("anew", connect);
  stream.addEventListener("end", () => {
    hasEnded = true;
    close();
    say("The card has ended.", "away");
    setTimeout(askForNext, AGAIN);
  });
}

// Another card may come to the same place.
async function askForNext() {
  try {
    await get("state");
    location.reload();
  } catch {
    setTimeout(askForNext, 2 * AGAIN);
  }
}

function close() {
  if (stream) stream.close();
  stream = null;
}

function say(text, state) {
  setText($("link"), text);
  $("link").dataset.state = state;
}

function away() {
  say("The card does not answer. Trying again.", "away");
}

document.addEventListener("visibilitychange", connect);

// One GET at a time; what came meanwhile is in the next one.
async function fetchDrawing(extent) {
  wanted = extent;
  if (isFetching) return;
  isFetching = true;
  try {
    while (wanted.number !== picture.number || wanted.points > picture.count) {
      const asked = wanted;
      const from = asked.number === picture.number ? picture.count : 0;
      const bytes = await (await get(`drawing?from=${from}`)).arrayBuffer();
      const [number, first, count] = new Uint32Array(bytes, 0, 3);
      if (number !== picture.number) {
        picture.clear(number);
        if (first !== 0) continue;
      }
      picture.add(first, new Float32Array(bytes, 20, 2 * count), new Uint8Array(bytes, 20 + 8 * count, count));
      if (wanted === asked && number !== asked.number) break;  // the event that tells of this picture is on its way
      requestFrame();
    }
  } catch {
    setTimeout(() => fetchDrawing(wanted), AGAIN);
  }
  isFetching = false;
  requestFrame();
}

// ---- What is shown ----

const figure = (number, digits = 3) => Number(number).toLocaleString("en", { maximumFractionDigits: digits });

function setText(element, text) {
  if (element.textContent !== text) element.textContent = text;
}

function element(tag, text = "", ...children) {
  const made = document.createElement(tag);
  if (text) made.textContent = text;
  made.append(...children);
  return made;
}

function button(text, onclick) {
  return Object.assign(element("button", text), { type: "button", onclick });
}

// Children by their keys, so that what has the focus stays.
function fill(parent, rows, key, make, update = () => {}) {
  const there = new Map([...parent.children].map(child => [child.dataset.key, child]));
  rows.forEach((row, index) => {
    const name = String(key(row, index));
    let child = there.get(name);
    there.delete(name);
    if (!child) {
      child = make(row, index);
      child.dataset.key = name;
    }
    if (parent.children[index] !== child) parent.insertBefore(child, parent.children[index] || null);
    update(child, row, index);
  });
  for (const child of there.values()) child.remove();
}

const byIndex = (_, index) => index;

const STATS = [
  ["Time, s", () => run.seconds],
  ["Card's time of the latest run, s", () => run.stats.executionTime / 1e6],
  ["Vectors", () => run.stats.macroVectors],
  ["Micro vectors", () => run.stats.microVectors],
  ["Computation, ms", () => run.stats.computationTime / 1e3],
];

const COUNTERS = [
  ["Calls since the card's start", "calls"],
  ["Refused calls", "failedCalls"],
  ["Runs", "runs"],
  ["Aborted runs", "abortedRuns"],
  ["Commands run", "listCommands"],
];

function progressOf({ list, running, command, commands: all }) {
  if (list === null) return 0;
  return running && all > 0 ? Math.max(0, command) / all : 1;
}

const sections = {
  run(next) {
    run = next;
    setText($("run"), run.list === null ? "No run yet" : `List ${run.list} ${run.running ? "is running" : "has ended"}`);
    $("progress").value = progressOf(run);
    setText($("position"), run.position.map(part => figure(part)).join(", "));
    setText($("points"), figure(run.picture.points) + (run.picture.cut ? " (cut)" : ""));
    showFigures($("stats"), STATS, value => run.list === null ? "-" : figure(value()));
    picture.position = run.position;
    picture.setRunning(run.running);
    fetchDrawing(run.picture);
    showCommands();
    requestFrame();
  },
  lists(next) {
    lists = next;
    commands = null;  // a list may be another one
    showLists();
    showCommands();
  },
  variables(next) {
    fill($("variables"), next.rows, row => row.kind + row.id, row => {
      const input = element("input");
      input.type = "number";
      input.setAttribute("aria-label", `${row.kind} ${row.name || row.id}`);
      input.onchange = () => act({ do: "variable", id: row.id, kind: row.kind, value: Number(input.value) });
      const line = element("div", "", element("span", `${row.name || "#" + row.id} (${row.kind})`), input);
      line.className = "row";
      return element("li", "", line);
    }, (child, row) => {
      const input = child.querySelector("input");
      if (document.activeElement !== input) input.value = row.value;
    });
  },
  signals(next) {
    fill($("signals"), next.ids, id => id,
         id => element("li", "", button(`Reset signal ${id}`, () => act({ do: "signal", id, set: false }))));
  },
  pins(next) {
    ports = next;
    fill($("port"), ports, byIndex, (_, index) => new Option("", index),
         (child, port, index) => setText(child, `${index}, ${port.output ? "output" : "input"}`));
    showPins();
  },
  faults(next) {
    fill($("faults"), next, byIndex, () => {
      const line = element("div", "", element("span"), button("End", () => {}));
      line.className = "row";
      return element("li", "", line);
    }, (child, { text, calls, befell }) => {
      const [what, end] = child.firstChild.children, target = text.split(":")[0];
      setText(what, `${text}, befell ${figure(befell)} of ${figure(calls)}`);
      end.setAttribute("aria-label", `End the faults of ${target}`);
      end.onclick = () => act({ do: "fault", text: `${target}:off` });
    });
  },
  clients(next) {
    fill($("clients"), next.rows, row => row.peer, () => {
      const calls = element("div");
      calls.className = "calls";
      return element("li", "", element("span"), calls);
    }, (child, row) => {
      setText(child.firstChild, `${row.peer}, ${figure(row.calls)} calls seen`);
      fill(child.lastChild, row.latest, byIndex, () => element("div"), setText);
    });
  },
  counters(next) {
    showFigures($("counters"), COUNTERS, member => figure(next[member]));
  },
  notifications(next) {
    const first = next.count - next.latest.length;
    fill($("notifications"), next.latest.map((text, index) => [first + index, text]).reverse(), row => row[0],
         row => element("li", row[1]));
  },
};

// Rows of a name and what tells its value.
function showFigures(parent, rows, read) {
  fill(parent, rows, byIndex, ([name]) => element("div", "", element("dt", name), element("dd")),
       (child, [, value]) => setText(child.lastChild, read(value)));
}

function showLists() {
  if (shown === null && lists.rows.length > 0) shown = lists.rows[0].id;
  fill($("lists"), lists.rows, row => row.id, ({ id }) => element("li", "", button("", () => {
    shown = id;
    shownFirst = 0;
    $("follow").checked = false;
    showLists();
    showCommands();
  })), (child, row) => {
    const what = row.there ? `${figure(row.commands)} commands` : "stored";
    setText(child.firstChild, `${row.id}: ${what}${row.running ? ", runs" : ""}`);
    child.firstChild.setAttribute("aria-pressed", row.id === shown);
  });
}

function showPins() {
  const number = Number($("port").value || 0), port = ports[number];
  if (!port) return;
  fill($("pins"), [...Array(32).keys()], pin => `${number}.${pin}`, pin => {
    const made = button(String(pin), () => {
      if (made.getAttribute("aria-disabled") === "true") return;
      act({ do: "pin", port: number, pin, high: made.getAttribute("aria-pressed") !== "true" });
    });
    return made;
  }, (made, pin) => {
    const has = bits => (bits >>> pin & 1) === 1;
    made.setAttribute("aria-pressed", has(port.levels));
    made.setAttribute("aria-disabled", port.output || has(port.wired));
    made.setAttribute("aria-label", `Pin ${pin}${has(port.active) ? ", active" : ""}`);
    made.classList.toggle("active", has(port.active));
  });
}

const WINDOW = 40;
let isAsking = false;

async function showCommands() {
  const follows = run && run.running && $("follow").checked;
  if (follows && shown !== run.list) {
    shown = run.list;
    showLists();
  }
  if (shown === null || isAsking) return;
  const at = run && run.running && run.list === shown ? run.command : -1;
  if (follows && at >= 0) shownFirst = at - at % WINDOW;
  const from = shownFirst, id = shown;
  const end = commands ? commands.first + commands.commands.length : 0;
  const isHere = commands && commands.id === id && from >= commands.first && (from + WINDOW <= end || end >= commands.count);
  if (!isHere) {
    isAsking = true;
    try {
      commands = await (await get(`list?id=${id}&from=${from}`)).json();
    } catch {
      commands = { id, first: from, count: 0, commands: [] };
    }
    isAsking = false;
  }
  setText($("commands-title"), `Commands of list ${id}: ${figure(commands.count)}`);
  const texts = commands.commands.slice(from - commands.first, from - commands.first + WINDOW);
  fill($("commands"), texts, byIndex, () => element("li", "", element("span"), element("span")), (child, text, index) => {
    setText(child.firstChild, String(from + index));
    setText(child.lastChild, text);
    if (from + index !== at) child.removeAttribute("aria-current");
    else if (!child.hasAttribute("aria-current")) showStep(child);
  });
}

function showStep(child) {
  child.setAttribute("aria-current", "step");
  const box = $("commands"), top = child.offsetTop - box.offsetTop;
  if (top < box.scrollTop || top > box.scrollTop + box.clientHeight - child.offsetHeight) box.scrollTop = top;
}

// ---- What is done ----

async function act(action) {
  try {
    const answer = await fetch("do", { method: "POST", body: JSON.stringify(action),
                                       headers: { "Content-Type": "application/json", "X-Kelvo-Token": token } });
    setText($("refusal"), answer.ok ? "" : (await answer.text()).trim());
  } catch {
    setText($("refusal"), "The card does not answer.");
  }
}

$("start").onclick = () => act({ do: "start" });
$("resume").onclick = () => act({ do: "resume" });
$("port").onchange = showPins;
$("follow").onchange = showCommands;
$("earlier").onclick = () => turn(-WINDOW);
$("later").onclick = () => turn(WINDOW);
$("signal-form").onsubmit = event => {
  event.preventDefault();
  act({ do: "signal", name: $("signal-name").value, set: true });
};

$("fault-form").onsubmit = event => {
  event.preventDefault();
  act({ do: "fault", text: $("fault").value });
};
$("no-faults").onclick = () => act({ do: "fault", text: "off" });

function turn(by) {
  $("follow").checked = false;
  const last = commands ? Math.max(0, commands.count - 1) : 0;
  shownFirst = Math.max(0, Math.min(shownFirst + by, last - last % WINDOW));
  showCommands();
}

// ---- The field ----

const stage = $("stage"), fingers = new Map();
const STEP = 60, ZOOM = 1.25, LEAST_SPAN = 10;
const keys = {
  ArrowLeft: () => picture.pan(STEP, 0), ArrowRight: () => picture.pan(-STEP, 0),
  ArrowUp: () => picture.pan(0, STEP), ArrowDown: () => picture.pan(0, -STEP),
  "+": () => picture.zoom(ZOOM), "=": () => picture.zoom(ZOOM), "-": () => picture.zoom(1 / ZOOM),
  0: () => picture.showAll(),
};

function change(how) {
  how();
  requestFrame();
}

function placeOf(event) {
  const box = $("done").getBoundingClientRect(), ratio = window.devicePixelRatio || 1;
  return { x: (event.clientX - box.left) * ratio, y: (event.clientY - box.top) * ratio };
}

stage.onkeydown = event => {
  if (!keys[event.key] || event.ctrlKey || event.metaKey || event.altKey) return;
  event.preventDefault();
  change(keys[event.key]);
};
$("closer").onclick = () => change(keys["+"]);
$("farther").onclick = () => change(keys["-"]);
$("whole").onclick = () => change(keys[0]);
$("jumps").onchange = () => change(() => {
  picture.showsJumps = $("jumps").checked;
  picture.isStale = true;
});
stage.addEventListener("wheel", event => {
  event.preventDefault();
  const at = placeOf(event);
  change(() => picture.zoom(Math.exp(-Math.max(-200, Math.min(200, event.deltaY)) / 300), at.x, at.y));
}, { passive: false });
stage.onpointerdown = event => {
  stage.setPointerCapture(event.pointerId);
  fingers.set(event.pointerId, placeOf(event));
};
stage.onpointermove = event => {
  const now = placeOf(event), before = fingers.get(event.pointerId);
  const other = [...fingers].find(([id]) => id !== event.pointerId);
  change(() => {
    picture.pointer = now;
    const at = picture.toField(now.x, now.y);
    setText($("pointer"), `${figure(at.x)}, ${figure(at.y)}`);
    if (!before) return;
    fingers.set(event.pointerId, now);
    if (!other) return void picture.pan(now.x - before.x, now.y - before.y);
    const [, still] = other;
    const span = point => Math.max(LEAST_SPAN, Math.hypot(point.x - still.x, point.y - still.y));
    picture.zoom(span(now) / span(before), still.x, still.y);
  });
};
stage.onpointerup = stage.onpointercancel = event => fingers.delete(event.pointerId);
stage.onpointerleave = () => change(() => {
  picture.pointer = null;
  setText($("pointer"), "-");
});

// ---- Frames: only when something has changed ----

let colours = null, isAskedFor = false;

function readColours() {
  const style = getComputedStyle(document.documentElement);
  colours = Object.fromEntries(["mark", "jump", "beam"].map(name => [name, style.getPropertyValue(`--${name}`).trim()]));
  picture.isStale = true;
  requestFrame();
}

function requestFrame() {
  if (isAskedFor || !colours) return;
  isAskedFor = true;
  requestAnimationFrame(() => {
    isAskedFor = false;
    const isDone = picture.frame(colours);
    // What of the drawing is to be seen, for whoever waits for that.
    stage.dataset.drawn = isDone && !isFetching ? `${picture.number}:${picture.drawn}` : "";
    if (!isDone) requestFrame();
  });
}

matchMedia("(prefers-color-scheme: dark)").addEventListener("change", readColours);
new ResizeObserver(requestFrame).observe(stage);
readColours();
connect();
