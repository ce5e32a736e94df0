// The paths: a tree with its search at the left.

class PathView {
    #openBeforeSearch = null;
    #mark = 0; // of the nodes that the search leaves; 0 for all
    #chosen = null;
    #query = null;

    constructor(page) {
        this.page = page;
        this.index = page.index;
        this.details = new PathDetails(page, document.getElementById("path-details"));
        this.count = document.getElementById("path-count");
        this.box = document.getElementById("path-tree");
        this.list = new RowList(this.box, {
            rowHeight: 28,
            role: "treeitem",
            fillRow: (node) => this.#fillRow(node),
            labelOf: (node) => node.name,
            choose: (node) => page.go(pathRoute(node.path, this.search.text)),
            key: (event, node) => this.#onKey(event, node),
        });
        this.list.isChosen = (node) => node.path === this.#chosen;
        this.search = new SearchBox(document.getElementById("path-search"), {
            search: (text) => this.#onSearch(text),
            leave: () => this.box.focus(),
        });
        this.empty = document.getElementById("path-empty");
        this.tree = page.tree;
        this.#openShort();
    }

    // A small device shows as a whole, of a large one the first level.
    #openShort() {
        if (this.index.paths.length <= 60)
            this.tree.open = this.tree.nodes.flatMap(ancestorsOf);
    }

    show(route) {
        this.search.text = route.q;
        const path = route.names.join("/");
        const isOther = path !== this.#chosen;
        this.#chosen = path;
        if (this.#query !== route.q)
            this.#applySearch(route.q);
        if (isOther)
            this.#reveal(path);
        this.list.draw();
        if (isOther)
            this.details.show(path, path === "" ? null : this.tree.find(path));
        return path === "" ? "Paths" : path;
    }

    // Opens what is above the chosen path, and moves there.
    #reveal(path) {
        const node = path === "" ? null : this.tree.find(path);
        if (!node || (this.#mark > 0 && node.mark !== this.#mark))
            return;
        ancestorsOf(node).forEach((above) => { above.isOpen = true; });
        this.#showRows(node);
    }

    #onSearch(text) {
        this.#applySearch(text);
        this.page.replaceRoute({view: "path", names: this.#chosen ? this.#chosen.split("/") : [],
                                q: text});
    }

    #applySearch(text) {
        this.#query = text;
        const query = parseQuery(text, "path");
        if (isEmptyQuery(query)) {
            this.#mark = 0;
            if (this.#openBeforeSearch)
                this.tree.open = this.#openBeforeSearch;
            this.#openBeforeSearch = null;
            this.#tell(`${counted(this.index.paths.length, "path")}`);
        } else {
            const found = searchPaths(this.index, query);
            this.#openBeforeSearch ??= this.tree.open;
            this.#mark = this.tree.markLeadingTo(found.paths);
            this.found = new Set(found.paths);
            this.#tell(`${counted(found.paths.length, "path")} with ` +
                       `${counted(found.mounts, "matching mount")}`);
        }
        this.#showEmpty(query);
        this.box.scrollTop = 0;
        this.#showRows(null);
    }

    #tell(text) {
        this.count.textContent = text;
    }

    #showRows(active) {
        const rows = this.tree.visible(this.#mark);
        const at = active ? rows.indexOf(active) : -1;
        this.list.show(rows, Math.max(at, 0));
        if (at >= 0)
            this.list.moveTo(at);
    }

    #showEmpty(query) {
        const isEmpty = this.#mark > 0 && this.found.size === 0;
        this.empty.hidden = !isEmpty;
        this.box.hidden = isEmpty;
        if (isEmpty)
            this.empty.replaceChildren(makeEmpty("No path matches.", ...this.#suggestions(query)));
    }

    // A word that is no path may be a type or an agent.
    #suggestions(query) {
        const word = query.path.length === 1 ? query.path[0] : null;
        const tries = word === null ? [] : ["type", "agent"].filter((field) => {
            const other = {...query, path: [], [field]: [...query[field], word]};
            return searchPaths(this.index, other).paths.length > 0;
        });
        return tries.map((field) => make("p", {}, "Try ", make("button", {
            type: "button", class: "button", on: {click: () => this.#searchFor(`${field}:${word}`)},
        }, makeName(`${field}:${word}`))));
    }

    #searchFor(text) {
        this.search.text = text;
        this.#onSearch(text);
        this.search.focus();
    }

    #toggle(node, isOpen = !node.isOpen) {
        node.isOpen = isOpen;
        this.#showRows(node);
    }

    #onKey(event, node) {
        if (event.type === "click")
            return this.#onTwist(event, node);
        const {isOpen} = node;
        if (event.key === "ArrowRight" && node.isDirectory)
            isOpen ? this.list.moveTo(this.list.active + 1) : this.#toggle(node, true);
        else if (event.key === "ArrowLeft" && isOpen && node.isDirectory)
            this.#toggle(node, false);
        else if (event.key === "ArrowLeft" && node.parent.parent)
            this.list.moveTo(this.list.rows.indexOf(node.parent));
        else if (event.key === "*")
            this.#openAllBeside(node);
        else
            return false;
        return true;
    }

    #onTwist(event, node) {
        if (!event.target.closest(".twist") || !node.isDirectory)
            return false;
        this.#toggle(node);
        return true;
    }

    #openAllBeside(node) {
        for (const sibling of node.parent.children)
            sibling.isOpen = sibling.isDirectory;
        this.#showRows(node);
    }

    #fillRow(node) {
        const isFound = this.#mark === 0 || this.found.has(node.id);
        const row = make("div", {
            "aria-level": node.depth, "aria-posinset": node.position,
            "aria-setsize": node.parent.shownChildren,
            "aria-expanded": node.isDirectory ? String(node.isOpen) : undefined,
            class: isFound ? "" : "aside", title: visibleText(node.path),
        });
        row.style.paddingLeft = `${(node.depth - 1) * 14 + 4}px`;
        row.append(make("span", {class: node.isDirectory ? "twist" : "twist leaf",
                                 "aria-hidden": "true"}),
                   makeName(node.name, {class: node.name.includes("*") ? "star" : ""}));
        const mounts = node.id >= 0 ? this.index.mountsByPath.sizeOf(node.id) : 0;
        if (mounts > 0)
            row.append(make("span", {class: "badge", title: counted(mounts, "mount"),
                                     "aria-label": counted(mounts, "mount")}, String(mounts)));
        return row;
    }
}
