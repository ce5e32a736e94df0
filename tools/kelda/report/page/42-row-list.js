// A list of which only the rows in sight are elements, so that it may have any number of them. The
// box keeps the focus and names the active row; arrows, Home, End, pages and first letters move it.

const rowsBeyondSight = 8;

class RowList {
    #drawIsDue = false;
    #typed = "";
    #typedAt = 0;

    /**
     * `fillRow(row)` gives an element for a row, `labelOf(row)` what letters look for;
     * `choose(row)` is called for a click or Enter; `key(event, row)` may take either first.
     */
    constructor(box, {rowHeight, role = "option", fillRow, labelOf, choose, key}) {
        Object.assign(this, {box, rowHeight, role, fillRow, labelOf, choose, key});
        this.rows = [];
        this.active = -1;
        this.isChosen = () => false;
        this.sheet = make("div", {class: "rows", role: "presentation"});
        box.replaceChildren(this.sheet);
        box.addEventListener("scroll", () => this.#drawSoon());
        box.addEventListener("keydown", (event) => this.#onKey(event));
        box.addEventListener("click", (event) => this.#onClick(event));
        new ResizeObserver(() => this.#drawSoon()).observe(box);
    }

    /** Shows other rows; `active` is the place of the one that keys begin at. */
    show(rows, active = 0) {
        this.rows = rows;
        this.active = Math.max(Math.min(active, rows.length - 1), -1);
        this.sheet.style.height = `${rows.length * this.rowHeight}px`;
        this.draw();
    }

    moveTo(at) {
        if (this.rows.length === 0)
            return;
        this.active = Math.max(0, Math.min(at, this.rows.length - 1));
        this.#bringIntoSight();
        this.draw();
    }

    draw() {
        this.#drawIsDue = false;
        const {scrollTop, clientHeight} = this.box;
        const first = Math.max(0, Math.floor(scrollTop / this.rowHeight) - rowsBeyondSight);
        const inSight = Math.ceil((scrollTop + clientHeight) / this.rowHeight);
        const last = Math.min(this.rows.length - 1, inSight + rowsBeyondSight);
        const elements = [];
        for (let at = first; at <= last; ++at)
            elements.push(this.#makeRow(at));
        if (this.active >= 0 && (this.active < first || this.active > last))
            elements.push(this.#makeRow(this.active));
        this.sheet.replaceChildren(...elements);
        if (this.active >= 0)
            this.box.setAttribute("aria-activedescendant", this.#idOf(this.active));
        else
            this.box.removeAttribute("aria-activedescendant");
    }

    #drawSoon() {
        if (this.#drawIsDue)
            return;
        this.#drawIsDue = true;
        requestAnimationFrame(() => this.draw());
    }

    #idOf(at) {
        return `${this.box.id}-row-${at}`;
    }

    #makeRow(at) {
        const element = this.fillRow(this.rows[at]);
        element.id = this.#idOf(at);
        element.classList.add("row");
        element.classList.toggle("active", at === this.active);
        element.setAttribute("role", this.role);
        element.setAttribute("aria-selected", String(this.isChosen(this.rows[at])));
        if (!element.hasAttribute("aria-setsize")) {
            element.setAttribute("aria-setsize", this.rows.length);
            element.setAttribute("aria-posinset", at + 1);
        }
        element.dataset.at = at;
        element.style.top = `${at * this.rowHeight}px`;
        element.style.height = `${this.rowHeight}px`;
        return element;
    }

    #bringIntoSight() {
        const top = this.active * this.rowHeight;
        const {scrollTop, clientHeight} = this.box;
        if (top < scrollTop)
            this.box.scrollTop = top;
        else if (top + this.rowHeight > scrollTop + clientHeight)
            this.box.scrollTop = top + this.rowHeight - clientHeight;
    }

    #onClick(event) {
        const element = event.target.closest(".row");
        if (!element)
            return;
        this.active = Number(element.dataset.at);
        if (!this.key?.(event, this.rows[this.active]))
            this.choose(this.rows[this.active]);
    }

    #onKey(event) {
        if (event.ctrlKey || event.altKey || event.metaKey || this.rows.length === 0)
            return;
        if (this.key?.(event, this.rows[this.active]) || this.#moveByKey(event.key) ||
            this.#chooseByKey(event.key) || this.#moveByLetter(event.key))
            event.preventDefault();
    }

    #moveByKey(key) {
        const page = Math.max(1, Math.floor(this.box.clientHeight / this.rowHeight) - 1);
        const moves = {
            ArrowDown: this.active + 1, ArrowUp: this.active - 1,
            PageDown: this.active + page, PageUp: this.active - page,
            Home: 0, End: this.rows.length - 1,
        };
        if (moves[key] === undefined)
            return false;
        this.moveTo(moves[key]);
        return true;
    }

    #chooseByKey(key) {
        if (this.active < 0 || (key !== "Enter" && key !== " "))
            return false;
        this.choose(this.rows[this.active]);
        return true;
    }

    // Letters typed in a row look for a name that begins with them.
    #moveByLetter(key) {
        if (key.length !== 1 || key === "/")
            return false;
        const now = performance.now();
        this.#typed = (now - this.#typedAt < 800 ? this.#typed : "") + key.toLowerCase();
        this.#typedAt = now;
        const from = this.#typed.length > 1 ? this.active : this.active + 1;
        for (let step = 0; step < this.rows.length; ++step) {
            const at = (from + step) % this.rows.length;
            if (this.labelOf(this.rows[at]).toLowerCase().startsWith(this.#typed)) {
                this.moveTo(at);
                return true;
            }
        }
        return false;
    }
}
