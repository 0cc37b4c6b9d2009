// The drawing: what is done on a canvas of its own, beam and pointer on one above it.
const START = 0, JUMP = 1, MARK = 2, DOT = 3;
const CHUNK = 65536;          // points kept in one piece
const SLICE = 40000;          // points drawn without looking at the clock
const FRAME = 8;              // milliseconds of a frame that drawing may take
const REST_FRAMES = 6;        // so long nobody must have moved the view before it is drawn anew
const STEPS = 8;              // by which a growing drawing's view grows, for each doubling
const MARGIN_SHARE = 0.05, MARGIN_BEAMS = 5;

export class Picture {
  constructor(done, beam) {
    this.done = done;
    this.over = beam;
    this.ink = done.getContext("2d");
    this.light = beam.getContext("2d");
    this.old = document.createElement("canvas");
    this.beamWidth = 0.1;
    this.showsJumps = true;
    this.position = [0, 0];
    this.isRunning = false;
    this.pointer = null;
    this.view = { x: 0, y: 0, scale: 5 };
    this.follows = true;      // shows all until somebody moves the view
    this.restFrames = 0;
    this.clear(-1);
  }

  clear(number) {
    this.number = number;
    this.chunks = [];
    this.count = 0;
    this.drawn = 0;
    this.box = null;
    this.jumpBox = null;
    this.isStale = true;
  }

  // Points from the index `from` on, as far as they are new.
  add(from, places, pens) {
    for (let i = this.count - from; i < pens.length; ++i) {
      const at = this.count % CHUNK;
      if (at === 0) this.chunks.push({ places: new Float32Array(2 * CHUNK), pens: new Uint8Array(CHUNK) });
      const chunk = this.chunks[this.chunks.length - 1];
      const x = places[2 * i], y = places[2 * i + 1], pen = pens[i];
      chunk.places[2 * at] = x;
      chunk.places[2 * at + 1] = y;
      chunk.pens[at] = pen;
      if (pen === DOT) this.box = grown(this.box, x, y);
      if (pen === MARK) this.box = grown(grown(this.box, this.lastX, this.lastY), x, y);
      if (pen === JUMP) this.jumpBox = grown(grown(this.jumpBox, this.lastX, this.lastY), x, y);
      this.lastX = x;
      this.lastY = y;
      ++this.count;
    }
    if (this.follows) this.fit();
  }

  setRunning(isRunning) {
    if (isRunning === this.isRunning) return;
    this.isRunning = isRunning;
    if (this.follows) this.fit();
  }

  resize() {
    const ratio = window.devicePixelRatio || 1;
    const width = Math.round(this.done.clientWidth * ratio), height = Math.round(this.done.clientHeight * ratio);
    if (width === this.done.width && height === this.done.height) return;
    for (const canvas of [this.done, this.over]) {
      canvas.width = width;
      canvas.height = height;
    }
    if (this.follows) this.showAll();
    this.isStale = true;
  }

  field() {
    const box = this.box || this.jumpBox || { x0: 0, y0: 0, x1: 0, y1: 0 };
    const margin = Math.max(MARGIN_SHARE * Math.max(box.x1 - box.x0, box.y1 - box.y0), MARGIN_BEAMS * this.beamWidth);
    return { x0: box.x0 - margin, y0: box.y0 - margin, x1: box.x1 + margin, y1: box.y1 + margin };
  }

  // All of it. What the view is depends on the drawing alone, not on how it came; while it grows it is only drawn anew
  // when it has grown by a step.
  fit() {
    if (!this.done.width) return;
    const f = this.isRunning ? rounded(this.field()) : this.field();
    const view = { x: (f.x0 + f.x1) / 2, y: (f.y0 + f.y1) / 2,
                   scale: Math.min(this.done.width / (f.x1 - f.x0), this.done.height / (f.y1 - f.y0)) };
    if (view.x === this.view.x && view.y === this.view.y && view.scale === this.view.scale) return;
    this.view = view;
    this.isStale = true;
  }

  showAll() {
    this.follows = true;
    this.restFrames = 0;
    this.isStale = true;
    this.fit();
  }

  // By so many device pixels.
  pan(dx, dy) {
    this.moveOld(1, dx, dy);
    this.view.x -= dx / this.view.scale;
    this.view.y += dy / this.view.scale;
  }

  zoom(factor, px = this.done.width / 2, py = this.done.height / 2) {
    const scale = Math.min(1e7, Math.max(1e-3, this.view.scale * factor));
    const real = scale / this.view.scale, before = this.toField(px, py);
    this.moveOld(real, px * (1 - real), py * (1 - real));
    this.view.scale = scale;
    const after = this.toField(px, py);
    this.view.x += before.x - after.x;
    this.view.y += before.y - after.y;
  }

  // The old picture moves at once; it is drawn anew when there is time.
  moveOld(factor, dx, dy) {
    this.follows = false;
    this.isStale = true;
    this.restFrames = REST_FRAMES;
    this.old.width = this.done.width;
    this.old.height = this.done.height;
    this.old.getContext("2d").drawImage(this.done, 0, 0);
    this.wipe(this.ink);
    this.ink.drawImage(this.old, dx, dy, this.done.width * factor, this.done.height * factor);
  }

  toField(px, py) {
    return { x: (px - this.done.width / 2) / this.view.scale + this.view.x,
             y: (this.done.height / 2 - py) / this.view.scale + this.view.y };
  }

  wipe(context) {
    context.setTransform(1, 0, 0, 1, 0, 0);
    context.clearRect(0, 0, this.done.width, this.done.height);
  }

  // One frame. Whether all that there is has been drawn.
  frame(colours) {
    this.resize();
    this.drawBeam(colours);
    if (this.isStale && this.restFrames-- > 0) return false;
    if (this.isStale) {
      this.isStale = false;
      this.drawn = 0;
      this.wipe(this.ink);
    }
    const end = performance.now() + FRAME;
    while (this.drawn < this.count && performance.now() < end) this.drawSome(colours);
    return this.drawn === this.count;
  }

  drawSome(colours) {
    const last = Math.min(this.count, this.drawn + SLICE);
    const { x, y, scale } = this.view, context = this.ink;
    context.setTransform(scale, 0, 0, -scale, this.done.width / 2 - x * scale, this.done.height / 2 + y * scale);
    context.lineCap = context.lineJoin = "round";
    const marks = new Path2D(), dots = new Path2D(), jumps = new Path2D();
    let pen = START, { fromX, fromY } = this;
    for (let i = this.drawn; i < last; ++i) {
      const chunk = this.chunks[Math.floor(i / CHUNK)], at = i % CHUNK;
      const toX = chunk.places[2 * at], toY = chunk.places[2 * at + 1], next = chunk.pens[at];
      if (next === MARK || next === JUMP) {
        const path = next === MARK ? marks : jumps;
        if (pen !== next) path.moveTo(fromX, fromY);
        path.lineTo(toX, toY);
      } else if (next === DOT) {
        dots.moveTo(toX + this.beamWidth / 2, toY);
        dots.arc(toX, toY, this.beamWidth / 2, 0, 2 * Math.PI);
      }
      pen = next;
      fromX = toX;
      fromY = toY;
    }
    Object.assign(this, { fromX, fromY, drawn: last });
    if (this.showsJumps) {
      context.globalAlpha = 0.35;
      context.strokeStyle = colours.jump;
      context.lineWidth = Math.max(0.25 * this.beamWidth, 0.5 / scale);
      context.stroke(jumps);
      context.globalAlpha = 1;
    }
    context.strokeStyle = context.fillStyle = colours.mark;
    context.lineWidth = Math.max(this.beamWidth, 1 / scale);
    context.stroke(marks);
    context.fill(dots);
  }

  drawBeam(colours) {
    const context = this.light, { x, y, scale } = this.view, ratio = window.devicePixelRatio || 1;
    this.wipe(context);
    context.strokeStyle = context.fillStyle = colours.beam;
    context.lineWidth = 2 * ratio;
    context.beginPath();
    context.arc(this.done.width / 2 + (this.position[0] - x) * scale,
                this.done.height / 2 - (this.position[1] - y) * scale, 5 * ratio, 0, 2 * Math.PI);
    context.stroke();
    if (this.isRunning) context.fill();
    if (!this.pointer) return;
    context.lineWidth = 1;
    context.globalAlpha = 0.5;
    context.beginPath();
    context.moveTo(this.pointer.x, 0);
    context.lineTo(this.pointer.x, this.done.height);
    context.moveTo(0, this.pointer.y);
    context.lineTo(this.done.width, this.pointer.y);
    context.stroke();
    context.globalAlpha = 1;
  }
}

function rounded(f) {
  const step = 2 ** Math.floor(Math.log2(Math.max(f.x1 - f.x0, f.y1 - f.y0))) / STEPS;
  return { x0: Math.floor(f.x0 / step) * step, y0: Math.floor(f.y0 / step) * step,
           x1: Math.ceil(f.x1 / step) * step, y1: Math.ceil(f.y1 / step) * step };
}

function grown(box, x, y) {
  if (!box) return { x0: x, y0: y, x1: x, y1: y };
  if (x < box.x0) box.x0 = x;
  if (x > box.x1) box.x1 = x;
  if (y < box.y0) box.y0 = y;
  if (y > box.y1) box.y1 = y;
  return box;
}
