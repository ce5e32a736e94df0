// A search box: searches once a frame while somebody types, and leads on into the list below it.

class SearchBox {
    #isDue = false;

    /** `search(text)` is called with each new text, `leave()` for ArrowDown. */
    constructor(input, {search, leave}) {
        this.input = input;
        this.search = search;
        input.addEventListener("input", () => this.#searchSoon());
        input.addEventListener("keydown", (event) => {
            if (event.key === "ArrowDown") {
                event.preventDefault();
                leave();
            } else if (event.key === "Escape" && input.value !== "") {
                event.preventDefault();
                input.value = "";
                this.#searchSoon();
            }
        });
    }

    #searchSoon() {
        if (this.#isDue)
            return;
        this.#isDue = true;
        requestAnimationFrame(() => {
            this.#isDue = false;
            this.search(this.input.value);
        });
    }

    get text() { return this.input.value; }

    /** Shows a text that came from elsewhere. */
    set text(text) {
        if (this.input.value !== text)
            this.input.value = text;
    }

    focus() {
        this.input.focus();
        this.input.select();
    }
}
