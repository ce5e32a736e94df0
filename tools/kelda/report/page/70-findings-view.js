// What the checks found.

const severities = ["error", "warning", "note"];
const findingsAtOnce = 100;
const noFindings = ["The checks found nothing.", "No errors, no warnings, no notes."];
const noFindingMatches = ["No finding matches.", "Switch on another severity, or search for less."];

class FindingsView {
    #shown = null; // text and severities that are shown

    constructor(page) {
        this.page = page;
        this.index = page.index;
        this.list = document.getElementById("finding-list");
        this.count = document.getElementById("finding-count");
        this.chosen = new Set(severities);
        this.search = new SearchBox(document.getElementById("finding-search"), {
            search: () => this.#changed(),
            leave: () => this.list.querySelector("button")?.focus(),
        });
        this.buttons = severities.map((severity) => this.#makeSwitch(severity));
        document.getElementById("finding-severities").append(...this.buttons);
    }

    #makeSwitch(severity) {
        const count = this.index.findings.filter((finding) => finding.severity === severity).length;
        const button = make("button", {type: "button", class: `switch severity ${severity}`},
                            counted(count, severity));
        button.addEventListener("click", () => {
            if (!this.chosen.delete(severity))
                this.chosen.add(severity);
            this.#changed();
        });
        return button;
    }

    show(route) {
        this.search.text = route.q;
        const wanted = route.show === "" ? severities : route.show.split(",");
        this.chosen = new Set(severities.filter((severity) => wanted.includes(severity)));
        this.#draw();
        return "Findings";
    }

    #changed() {
        const wanted = severities.filter((name) => this.chosen.has(name));
        const show = wanted.length === severities.length ? "" : wanted.join(",") || "none";
        this.page.replaceRoute({view: "findings", q: this.search.text, show});
        this.#draw();
    }

    #draw() {
        const wanted = severities.filter((severity) => this.chosen.has(severity));
        const state = `${wanted} ${this.search.text}`;
        if (state === this.#shown)
            return;
        this.#shown = state;
        this.buttons.forEach((button, at) =>
            button.setAttribute("aria-pressed", String(this.chosen.has(severities[at]))));
        this.#showFound(searchFindings(this.index, this.search.text, wanted));
    }

    #showFound(found) {
        const all = this.index.findings.length;
        this.count.textContent =
            `${counted(found.length, "finding")} of ${all.toLocaleString("en")}`;
        if (found.length === 0) {
            this.list.replaceChildren(makeEmpty(...(all > 0 ? noFindingMatches : noFindings)
                .map((text, at) => at > 0 ? make("p", {}, text) : text)));
            return;
        }
        const list = make("ul", {class: "findings"});
        const more = appendInPieces(list, found, (finding) => this.#makeFinding(finding),
                                    findingsAtOnce, "finding");
        this.list.replaceChildren(list, more);
    }

    #makeFinding(finding) {
        const {severity, rule, message, hint} = finding;
        const place = this.index.placeOfFinding(finding);
        const summary = this.index.data.rules?.[rule];
        return make("li", {class: "finding"},
                    make("span", {class: `severity ${severity}`}, severity),
                    make("div", {class: "finding-text"},
                         make("p", {class: "message"}, makeName(message)),
                         place ? make("p", {}, makePlace(place)) : null,
                         hint ? make("p", {class: "hint"}, "Hint: ", makeName(hint)) : null,
                         make("p", {class: "rule"}, make("code", {}, rule),
                              summary ? ` ${visibleText(summary)}` : "")));
    }
}
