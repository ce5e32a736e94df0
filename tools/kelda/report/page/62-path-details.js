// All that is known of one path.

const groupsAtOnce = 40;

class PathDetails {
    constructor(page, box) {
        this.page = page;
        this.index = page.index;
        this.box = box;
    }

    /** `node` is that of the tree: null where no path is chosen, undefined for an unknown path. */
    show(path, node) {
        this.box.scrollTop = 0;
        if (node === null)
            this.box.replaceChildren(...makeOverview(this.page));
        else if (node === undefined)
            this.box.replaceChildren(this.#makeUnknown(path));
        else
            this.box.replaceChildren(...this.#partsOf(node));
    }

    #makeUnknown(path) {
        const search = makeLink(routeText({view: "path", q: path}), "Search for it");
        return makeEmpty("This device has no such path.", make("p", {}, makePath(path)),
                         make("p", {}, search));
    }

    #partsOf(node) {
        const heading = make("h2", {tabindex: "-1", class: "subject"}, makePath(node.path),
                             makeCopyButton(node.path));
        const parts = [heading, this.#makeFactsOf(node)];
        if (node.id >= 0)
            parts.push(this.#makeMounts(node), this.#makeOverlaps(node));
        if (node.isDirectory)
            parts.push(this.#makeBelow(node));
        return parts.filter((part) => part !== null);
    }

    #makeFactsOf(node) {
        if (node.id < 0)
            return makeFacts([["Directory", [counted(node.below, "path") + " below"]]]);
        const path = this.index.paths[node.id];
        const type = path.t ? makeLink(routeText({view: "path", q: `type:${path.t}`}),
                                       makeName(path.t), {title: "All paths of this type"})
                            : make("span", {class: "none"}, "none");
        const rows = [["Type", [type]]];
        if (path.a)
            rows.push(["Attribute", [makeName(path.a)]]);
        if (path.c)
            rows.push(["Configuration", ["yes, declared with CONFIG:"]]);
        rows.push(["Declared in", this.#declarations(path)]);
        return makeFacts(rows);
    }

    #declarations(path) {
        const places = (path.d ?? []).map((place) => makePlace(this.index.placeText(place)));
        return places.length > 0 ? places
                                 : [make("span", {class: "none"}, "no line of a preinit file")];
    }

    #makeMounts(node) {
        const mounts = Array.from(this.index.mountsByPath.of(node.id));
        if (mounts.length === 0)
            return make("section", {}, make("h3", {}, "Mounts"),
                        make("p", {class: "none"}, "No agent mounts this path."));
        const groups = groupMounts(this.index, mounts);
        const list = make("ul", {class: "cards"});
        const more = appendInPieces(list, groups, (group) => makeMountGroup(this.index, group),
                                    groupsAtOnce, "mount");
        return make("section", {}, make("h3", {}, `Mounted by ${counted(mounts.length, "agent")}`,
                                        this.#makeUse(mounts)), list, more);
    }

    #makeUse(mounts) {
        const writers = mounts.filter((mount) => this.index.writes(mount)).length;
        const readers = mounts.filter((mount) => this.index.reads(mount)).length;
        return make("span", {class: "aside-text"}, `${counted(writers, "writer")}, ` +
                                                   `${counted(readers, "reader")}`);
    }

    #makeOverlaps(node) {
        const overlaps = this.page.overlaps.of(node.id);
        if (overlaps.length === 0)
            return null;
        const body = make("tbody");
        const more = appendInPieces(body, overlaps, (id) => this.#makePathRow(
            this.index.paths[id].p, this.index.paths[id].t, this.index.mountsByPath.sizeOf(id)),
                                    groupsAtOnce, "path");
        return make("section", {}, make("h3", {}, "May be the same path"),
                    make("p", {class: "hint"},
                         "A * is a value that only an agent’s name gives, so these can meet."),
                    makePathTable(body), more);
    }

    #makePathRow(path, type, mounts) {
        const link = makeLink(pathRoute(path, this.page.query), makePath(path));
        return make("tr", {}, make("td", {}, link),
                    make("td", {class: "type"}, type ? makeName(type) : ""),
                    make("td", {class: "number"}, mounts > 0 ? String(mounts) : "–"));
    }

    #makeBelow(node) {
        const body = make("tbody");
        const more = appendInPieces(body, node.children, (child) => this.#makePathRow(
            child.path, child.id >= 0 ? this.index.paths[child.id].t : "",
            child.id >= 0 ? this.index.mountsByPath.sizeOf(child.id) : 0), groupsAtOnce, "path");
        return make("section", {}, make("h3", {}, `Below this path`,
                                        make("span", {class: "aside-text"},
                                             counted(node.below, "path"))),
                    makePathTable(body), more);
    }
}

function makePathTable(body) {
    return make("div", {class: "table-box"},
                make("table", {class: "data"},
                     make("thead", {}, make("tr", {}, make("th", {scope: "col"}, "Path"),
                                            make("th", {scope: "col"}, "Type"),
                                            make("th", {scope: "col", class: "number"}, "Mounts"))),
                     body));
}

/** What there is to see where nothing is chosen. */
function makeOverview(page) {
    const {index} = page;
    const {device = {}} = index.data;
    const folders = [["Preinit files", [makeName(device.preinitDir ?? "")]],
                     ["Mount profiles", [makeName(device.profileDir ?? "")]],
                     ["Written by", [makeName(index.data.program ?? "")]]];
    const figure = (count, noun, route) => make("li", {}, makeLink(
        route, make("span", {}, make("strong", {}, count.toLocaleString("en")),
                    ` ${noun}${count === 1 ? "" : "s"}`)));
    const figures = make("ul", {class: "figures"},
                         figure(index.paths.length, "path", "#/path"),
                         figure(index.agents.length, "agent", "#/agent"),
                         figure(index.mounts.length, "mount", "#/agent"),
                         figure(index.findings.length, "finding", "#/findings"));
    return [make("h2", {tabindex: "-1"}, "This device"), figures, makeFacts(folders),
            make("p", {class: "hint"}, "Choose a path at the side to see who mounts it, with " +
                                       "which flags, and which lines of which files say so.")];
}
