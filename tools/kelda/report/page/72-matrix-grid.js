// The matrix, drawn: only what is in sight, so that it may have any number of rows and columns. A
// box scrolls and has the focus; the drawing lies above it.

const cellSize = 26;
const scaleSteps = 5;

class MatrixGrid {
    #drawIsDue = false;
    #names = new Map(); // shortened names by agent and width

    /**
     * `choose(writer, reader)` is called for a chosen cell, `point(writer, reader, byKey)` for the
     * one that is pointed at: -1 for none.
     */
    constructor(frame, {nameOf, choose, point}) {
        Object.assign(this, {frame, nameOf, choose, point});
        this.box = frame.querySelector(".matrix-box");
        this.sheet = frame.querySelector(".matrix-sheet");
        this.canvas = frame.querySelector("canvas");
        this.writers = [];
        this.readers = [];
        this.active = {row: 0, column: 0};
        this.pointed = null;
        this.chosen = null;
        this.box.addEventListener("scroll", () => this.drawSoon());
        this.box.addEventListener("keydown", (event) => this.#onKey(event));
        this.box.addEventListener("focus", () => this.drawSoon());
        this.box.addEventListener("blur", () => this.drawSoon());
        this.box.addEventListener("click", (event) => this.#onClick(event));
        this.box.addEventListener("mousemove", (event) => this.#onPoint(this.#cellAt(event)));
        this.box.addEventListener("mouseleave", () => this.#onPoint(null));
        new ResizeObserver(() => this.drawSoon()).observe(this.box);
    }

    show(matrix, writers, readers) {
        Object.assign(this, {matrix, writers, readers});
        this.head = this.#headSize();
        this.active = {row: 0, column: 0};
        this.pointed = null;
        this.sheet.style.width = `${this.head.width + readers.length * cellSize + 8}px`;
        this.sheet.style.height = `${this.head.height + writers.length * cellSize + 8}px`;
        this.drawSoon();
    }

    /** Makes a cell the chosen one, and brings it into sight. */
    choosePair(writer, reader) {
        const row = this.writers.indexOf(writer);
        const column = this.readers.indexOf(reader);
        this.chosen = row >= 0 && column >= 0 ? {row, column} : null;
        if (this.chosen)
            this.#moveTo(row, column);
        this.drawSoon();
    }

    drawSoon() {
        if (this.#drawIsDue)
            return;
        this.#drawIsDue = true;
        requestAnimationFrame(() => {
            this.#drawIsDue = false;
            this.#draw();
        });
    }

    /** Where a cell shows, in the box: for whoever points at it. */
    centreOf(row, column) {
        return {x: this.head.width + (column + 0.5) * cellSize - this.box.scrollLeft,
                y: this.head.height + (row + 0.5) * cellSize - this.box.scrollTop};
    }

    #headSize() {
        const longest = (agents) => agents.reduce(
            (most, agent) => Math.max(most, this.nameOf(agent).length), 0);
        return {width: Math.min(200, 24 + longest(this.writers) * 8),
                height: Math.min(160, 24 + longest(this.readers) * 8)};
    }

    #moveTo(row, column) {
        row = Math.max(0, Math.min(row, this.writers.length - 1));
        column = Math.max(0, Math.min(column, this.readers.length - 1));
        this.active = {row, column};
        const {box, head} = this;
        const seen = {width: box.clientWidth - head.width, height: box.clientHeight - head.height};
        box.scrollLeft = Math.min(Math.max(box.scrollLeft, (column + 1) * cellSize - seen.width),
                                  column * cellSize);
        box.scrollTop = Math.min(Math.max(box.scrollTop, (row + 1) * cellSize - seen.height),
                                 row * cellSize);
        this.drawSoon();
    }

    #onKey(event) {
        if (event.altKey || event.metaKey || this.writers.length === 0)
            return;
        const {row, column} = this.active;
        const far = event.ctrlKey ? 1e9 : 1;
        const moves = {
            ArrowDown: [row + far, column], ArrowUp: [row - far, column],
            ArrowRight: [row, column + far], ArrowLeft: [row, column - far],
            Home: [event.ctrlKey ? 0 : row, 0], End: [event.ctrlKey ? 1e9 : row, 1e9],
            PageDown: [row + 10, column], PageUp: [row - 10, column],
        };
        if (moves[event.key]) {
            this.#moveTo(...moves[event.key]);
            this.#onPoint(this.active, true);
        } else if (event.key === "Enter" || event.key === " ") {
            this.#chooseCell(this.active);
        } else {
            return;
        }
        event.preventDefault();
    }

    #onClick(event) {
        const cell = this.#cellAt(event);
        if (cell) {
            this.active = cell;
            this.#chooseCell(cell);
        }
    }

    #chooseCell({row, column}) {
        this.choose(this.writers[row], this.readers[column]);
    }

    #onPoint(cell, byKey = false) {
        if (cell?.row === this.pointed?.row && cell?.column === this.pointed?.column)
            return;
        this.pointed = cell;
        this.point(cell ? this.writers[cell.row] : -1, cell ? this.readers[cell.column] : -1,
                   byKey);
        this.drawSoon();
    }

    #cellAt(event) {
        const place = this.box.getBoundingClientRect();
        const x = event.clientX - place.left - this.box.clientLeft - this.head.width;
        const y = event.clientY - place.top - this.box.clientTop - this.head.height;
        const column = Math.floor((x + this.box.scrollLeft) / cellSize);
        const row = Math.floor((y + this.box.scrollTop) / cellSize);
        const isCell = x >= 0 && y >= 0 && row < this.writers.length &&
                       column < this.readers.length;
        return isCell ? {row, column} : null;
    }

    #draw() {
        if (!this.matrix || this.box.clientWidth === 0)
            return;
        const pen = this.#prepare();
        const sight = this.#sight();
        this.#drawCells(pen, sight);
        this.#drawHeads(pen, sight);
        this.#drawMarks(pen);
    }

    #prepare() {
        const {clientWidth: width, clientHeight: height} = this.box;
        const ratio = window.devicePixelRatio || 1;
        if (this.canvas.width !== Math.round(width * ratio) ||
            this.canvas.height !== Math.round(height * ratio)) {
            this.canvas.width = Math.round(width * ratio);
            this.canvas.height = Math.round(height * ratio);
            this.canvas.style.width = `${width}px`;
            this.canvas.style.height = `${height}px`;
        }
        const pen = this.canvas.getContext("2d");
        pen.setTransform(ratio, 0, 0, ratio, 0, 0);
        pen.clearRect(0, 0, width, height);
        this.colours = coloursOf(this.frame);
        this.font = getComputedStyle(this.frame).fontFamily;
        return pen;
    }

    #sight() {
        const {scrollLeft, scrollTop, clientWidth, clientHeight} = this.box;
        const range = (offset, size, count) => ({
            first: Math.floor(offset / cellSize),
            last: Math.min(count - 1, Math.floor((offset + size) / cellSize)),
        });
        return {rows: range(scrollTop, clientHeight - this.head.height, this.writers.length),
                columns: range(scrollLeft, clientWidth - this.head.width, this.readers.length)};
    }

    #drawCells(pen, {rows, columns}) {
        pen.save();
        pen.beginPath();
        pen.rect(this.head.width, this.head.height, this.box.clientWidth, this.box.clientHeight);
        pen.clip();
        pen.font = `11px ${this.font}`;
        pen.textAlign = "center";
        pen.textBaseline = "middle";
        for (let row = rows.first; row <= rows.last; ++row)
            for (let column = columns.first; column <= columns.last; ++column)
                this.#drawCell(pen, row, column);
        pen.restore();
    }

    #drawCell(pen, row, column) {
        const {x, y} = this.centreOf(row, column);
        const count = this.matrix.countOf(this.writers[row], this.readers[column]);
        const isSelf = this.writers[row] === this.readers[column];
        const step = stepOf(count, this.matrix.most);
        pen.fillStyle = count > 0 ? this.colours.steps[step].back : this.colours.empty.back;
        pen.fillRect(x - cellSize / 2 + 1, y - cellSize / 2 + 1, cellSize - 2, cellSize - 2);
        if (count === 0 && !isSelf)
            return;
        pen.fillStyle = count > 0 ? this.colours.steps[step].text : this.colours.empty.text;
        pen.fillText(count > 0 ? shortCount(count) : "·", x, y);
    }

    #drawHeads(pen, {rows, columns}) {
        pen.fillStyle = this.colours.head.back;
        pen.fillRect(0, 0, this.box.clientWidth, this.head.height);
        pen.fillRect(0, 0, this.head.width, this.box.clientHeight);
        pen.textBaseline = "middle";
        this.#clipped(pen, 0, this.head.height, this.head.width, this.box.clientHeight, () => {
            pen.textAlign = "right";
            for (let row = rows.first; row <= rows.last; ++row)
                this.#drawName(pen, this.writers[row], this.head.width,
                               {x: this.head.width - 8, y: this.centreOf(row, 0).y, turn: 0},
                               this.pointed?.row === row);
        });
        this.#clipped(pen, this.head.width, 0, this.box.clientWidth, this.head.height, () => {
            pen.textAlign = "left";
            for (let column = columns.first; column <= columns.last; ++column)
                this.#drawName(pen, this.readers[column], this.head.height,
                               {x: this.centreOf(0, column).x, y: this.head.height - 8,
                                turn: -Math.PI / 2},
                               this.pointed?.column === column);
        });
        this.#drawCorner(pen);
    }

    #clipped(pen, x, y, width, height, draw) {
        pen.save();
        pen.beginPath();
        pen.rect(x, y, width, height);
        pen.clip();
        draw();
        pen.restore();
    }

    #drawName(pen, agent, room, {x, y, turn}, isPointed) {
        pen.save();
        pen.translate(x, y);
        pen.rotate(turn);
        pen.font = `${isPointed ? "600 " : ""}12px ${this.font}`;
        pen.fillStyle = isPointed ? this.colours.mark : this.colours.head.text;
        pen.fillText(this.#shortened(pen, agent, room - 16), 0, 0);
        pen.restore();
    }

    #shortened(pen, agent, room) {
        const key = `${pen.font} ${room} ${agent}`;
        if (!this.#names.has(key))
            this.#names.set(key, shortenedTo(this.nameOf(agent), room,
                                             (text) => pen.measureText(text).width));
        return this.#names.get(key);
    }

    #drawCorner(pen) {
        pen.font = `11px ${this.font}`;
        pen.fillStyle = this.colours.head.text;
        pen.textAlign = "right";
        pen.fillText("reads →", this.head.width - 8, this.head.height - 28);
        pen.fillText("writes ↓", this.head.width - 8, this.head.height - 12);
    }

    #drawMarks(pen) {
        this.#clipped(pen, this.head.width - 2, this.head.height - 2, this.box.clientWidth,
                      this.box.clientHeight, () => {
            if (this.chosen)
                this.#drawFrame(pen, this.chosen, 2);
            if (document.activeElement === this.box)
                this.#drawFrame(pen, this.active, 2);
            else if (this.pointed)
                this.#drawFrame(pen, this.pointed, 1);
        });
    }

    #drawFrame(pen, {row, column}, width) {
        const {x, y} = this.centreOf(row, column);
        pen.strokeStyle = this.colours.mark;
        pen.lineWidth = width;
        pen.strokeRect(x - cellSize / 2, y - cellSize / 2, cellSize, cellSize);
    }
}

/** The step of the colour scale for a count, of which `most` is the largest. */
function stepOf(count, most) {
    if (most <= scaleSteps)
        return Math.max(0, count - 1);
    return Math.min(scaleSteps - 1, Math.floor(Math.log(count) / Math.log(most) * scaleSteps));
}

/** The smallest count of each step that has any, with the largest. */
function rangesOfSteps(most) {
    const ranges = [];
    for (let count = 1; count <= most; ++count) {
        const step = stepOf(count, most);
        ranges[step] ??= {step, first: count, last: count};
        ranges[step].last = count;
    }
    return ranges.filter((range) => range);
}

function shortCount(count) {
    return count < 1000 ? String(count) : `${Math.floor(count / 1000)}k`;
}

function shortenedTo(text, room, widthOf) {
    if (widthOf(text) <= room)
        return text;
    let fits = 0;
    for (let tooLong = text.length; tooLong - fits > 1;) {
        const middle = (fits + tooLong) >> 1;
        if (widthOf(`${text.slice(0, middle)}…`) <= room)
            fits = middle;
        else
            tooLong = middle;
    }
    return `${text.slice(0, fits)}…`;
}

// A drawing knows no style sheet: the legend's elements tell their colours.
function coloursOf(frame) {
    const of = (selector) => {
        const style = getComputedStyle(frame.querySelector(selector));
        return {back: style.backgroundColor, text: style.color};
    };
    return {
        steps: Array.from({length: scaleSteps}, (_, step) => of(`.step-${step}`)),
        empty: of(".step-empty"),
        head: of(".step-head"),
        mark: of(".step-mark").text,
    };
}
