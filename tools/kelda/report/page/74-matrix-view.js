// Who writes what others read: the drawn matrix, the same as a list, and the paths of a pair.

class MatrixView {
    #matrix = null;
    #query = null;
    #pair = "";

    constructor(page) {
        this.page = page;
        this.index = page.index;
        this.count = document.getElementById("matrix-count");
        this.hint = document.getElementById("matrix-hint");
        this.details = document.getElementById("matrix-details");
        this.frame = document.getElementById("matrix-frame");
        this.empty = document.getElementById("matrix-empty");
        this.grid = new MatrixGrid(this.frame, {
            nameOf: (agent) => visibleText(this.index.agents[agent].name),
            choose: (writer, reader) => this.#choose(writer, reader),
            point: (writer, reader, byKey) => this.#point(writer, reader, byKey),
        });
        this.box = document.getElementById("pair-list");
        this.list = new RowList(this.box, {
            rowHeight: 32,
            fillRow: (pair) => this.#fillRow(pair),
            labelOf: (pair) => this.index.agents[pair.writer].name,
            choose: (pair) => this.#choose(pair.writer, pair.reader),
        });
        this.list.isChosen = (pair) => this.#keyOf(pair.writer, pair.reader) === this.#pair;
        this.search = new SearchBox(document.getElementById("matrix-search"), {
            search: (text) => this.#onSearch(text),
            leave: () => this.box.focus(),
        });
        page.onTheme(() => this.grid.drawSoon());
    }

    get matrix() {
        if (!this.#matrix) {
            this.#matrix = new AgentMatrix(this.index, this.page.overlaps);
            this.#showLegend(this.#matrix.most);
        }
        return this.#matrix;
    }

    show(route) {
        this.search.text = route.q;
        const isNew = this.#matrix === null;
        if (this.#query !== route.q || isNew)
            this.#applySearch(route.q);
        const [writer, reader] = route.names;
        this.#showPair(writer, reader);
        return writer && reader ? `${writer} → ${reader}` : "Matrix";
    }

    #keyOf(writer, reader) {
        return `${writer} ${reader}`;
    }

    #choose(writer, reader) {
        if (this.matrix.countOf(writer, reader) === 0) {
            announce(this.#sentence(writer, reader));
            return;
        }
        const {agents} = this.index;
        this.page.go(routeText({view: "matrix", q: this.search.text,
                                names: [agents[writer].name, agents[reader].name]}));
    }

    #onSearch(text) {
        this.#applySearch(text);
        this.page.replaceRoute({view: "matrix", q: text, names: this.pairNames ?? []});
    }

    // Leaves the rows and columns of pairs of which either agent has such a name.
    #applySearch(text) {
        this.#query = text;
        const words = text.split(/\s+/).filter((word) => word !== "");
        const tests = words.map((word) => nameTest(word.replace(/^agent:/i, "")));
        const fits = this.index.agents.map((agent) => passesAll(tests, agent.name));
        const pairs = this.matrix.pairs.filter((pair) => fits[pair.writer] || fits[pair.reader]);
        const present = (member) => Array.from(new Set(pairs.map(member))).sort((a, b) => a - b);
        this.grid.show(this.matrix, present((pair) => pair.writer), present((pair) => pair.reader));
        this.box.scrollTop = 0;
        this.list.show(pairs);
        this.count.textContent = `${counted(pairs.length, "pair")} of a writer and a reader`;
        this.frame.hidden = this.box.hidden = pairs.length === 0;
        this.empty.hidden = pairs.length > 0;
        this.empty.replaceChildren(makeEmpty(
            this.matrix.pairs.length > 0 ? "No agent matches."
                                         : "No agent reads what another one writes."));
    }

    #showPair(writerName, readerName) {
        const writer = this.index.agentIds.get(writerName);
        const reader = this.index.agentIds.get(readerName);
        this.pairNames = writerName && readerName ? [writerName, readerName] : null;
        this.#pair = this.#keyOf(writer, reader);
        this.grid.choosePair(writer, reader);
        const at = this.list.rows.findIndex(
            (pair) => pair.writer === writer && pair.reader === reader);
        if (at >= 0)
            this.list.moveTo(at);
        this.list.draw();
        this.details.scrollTop = 0;
        this.details.replaceChildren(...this.#partsOf(writer, reader));
    }

    #partsOf(writer, reader) {
        if (!this.pairNames)
            return [makeEmpty("No pair is chosen.", make(
                "p", {}, "Choose a cell, or a row of the list, to see its paths."))];
        const meetings = writer === undefined || reader === undefined
            ? [] : this.matrix.meetings(writer, reader);
        const heading = make("h2", {tabindex: "-1", class: "subject pair"},
                             ...this.pairNames.flatMap((name, at) => [
                                 at > 0 ? make("span", {class: "arrow"}, " → ") : null,
                                 makeLink(agentRoute(name), makeName(name))]));
        if (meetings.length === 0)
            return [heading, makeEmpty("The first writes nothing that the second reads.")];
        const body = make("tbody");
        const more = appendInPieces(body, meetings, (meeting) => this.#makeMeeting(meeting), 100,
                                    "path");
        return [heading, make("p", {class: "hint"}, this.#sentence(writer, reader)),
                make("div", {class: "table-box"},
                     make("table", {class: "data"}, makeMeetingHead(), body)),
                more];
    }

    #makeMeeting({written, read}) {
        const path = this.index.paths[this.index.pathOf[written]].p;
        const cell = make("td", {}, makeLink(pathRoute(path), makePath(path)));
        for (const mount of read) {
            const other = this.index.paths[this.index.pathOf[mount]].p;
            if (other !== path)
                cell.append(make("div", {class: "read-as"}, "read as ",
                                 makeLink(pathRoute(other), makePath(other))));
        }
        const readers = read.flatMap((mount) => [makeFlags(this.index.flagTextOf(mount)), " "]);
        return make("tr", {}, cell, make("td", {}, makeFlags(this.index.flagTextOf(written))),
                    make("td", {}, ...readers));
    }

    #sentence(writer, reader) {
        const name = (agent) => visibleText(this.index.agents[agent].name);
        const count = this.matrix.countOf(writer, reader);
        return writer === reader ? `${name(writer)} itself`
            : `${name(writer)} writes ${count === 0 ? "nothing" : counted(count, "path")} ` +
              `that ${name(reader)} reads.`;
    }

    #point(writer, reader, byKey) {
        const text = writer < 0 ? "" : this.#sentence(writer, reader);
        this.hint.textContent = text;
        if (byKey)
            announce(text);
    }

    #showLegend(most) {
        const legend = document.getElementById("matrix-legend");
        for (const {step, first, last} of rangesOfSteps(most))
            legend.querySelector(`.step-${step}`).textContent =
                first === last ? String(first) : `${first}–${last}`;
    }

    #fillRow({writer, reader, count}) {
        const name = (agent) => this.index.agents[agent].name;
        return make("div", {title: this.#sentence(writer, reader)}, makeName(name(writer)),
                    make("span", {class: "arrow"}, "→"), makeName(name(reader)),
                    make("span", {class: "badge", "aria-label": counted(count, "path")},
                         String(count)));
    }
}

function makeMeetingHead() {
    const titles = ["Path", "Writer", "Reader"];
    return make("thead", {}, make("tr", {}, ...titles.map(
        (title) => make("th", {scope: "col"}, title))));
}
