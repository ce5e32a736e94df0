// All that is known of one agent.

const mountsAtOnce = 100;

class AgentDetails {
    constructor(page, box) {
        this.page = page;
        this.index = page.index;
        this.box = box;
    }

    /** `id` is undefined for an unknown agent; an empty name for none. */
    show(name, id) {
        this.box.scrollTop = 0;
        if (name === "")
            this.box.replaceChildren(makeEmpty("No agent is chosen.", make(
                "p", {}, "Choose one at the side to see its settings and its mounts.")));
        else if (id === undefined)
            this.box.replaceChildren(makeEmpty("No profile of this device names this agent.",
                                               make("p", {}, makeName(name))));
        else
            this.box.replaceChildren(...this.#partsOf(id));
    }

    #partsOf(id) {
        const agent = this.index.agents[id];
        const heading = make("h2", {tabindex: "-1", class: "subject"}, makeName(agent.name),
                             makeCopyButton(agent.name));
        const parts = [heading];
        if (agent.faults?.length > 0)
            parts.push(this.#makeFaults(agent.faults, agent.faultCount ?? agent.faults.length));
        parts.push(this.#makeSettings(agent), this.#makeMounts(id));
        return parts;
    }

    #makeFaults(faults, count) {
        const list = make("ul");
        for (const fault of faults) {
            const item = make("li", {}, makeName(fault.message));
            if (fault.file !== undefined && fault.file >= 0)
                item.append(" ", makePlace(this.index.placeText([fault.file, fault.line])));
            list.append(item);
        }
        const left = count - faults.length;
        return make("section", {class: "callout error"},
                    make("h3", {}, `${counted(count, "fault")}: this agent would not start`), list,
                    left > 0 ? make("p", {}, `and ${counted(left, "more fault")}`) : null);
    }

    #makeSettings(agent) {
        const flags = (text) => text ? make("code", {class: "flags"}, text)
                                     : make("span", {class: "none"}, "none");
        const rows = [
            ["Kind", [agent.active ? "active mounts: the directories above its mounts, too"
                                   : "passive mounts"]],
            ["Root flags", [flags(agent.rootFlags)]],
            ["Connection flags", [flags(agent.connectionFlags)]],
            ["Default mounts", [agent.noDefaultMountGroup ? "none (noDefaultMountGroup)" : "yes"]],
        ];
        if (agent.hasActiveVariant)
            rows.push(["Variant", ["serves agent strings with -Active-, too"]]);
        if (agent.subAgents?.length > 0)
            rows.push(["Sub-agents", agent.subAgents.map((name) => makeName(name))]);
        rows.push(["Profiles", (agent.profiles ?? []).map((file) =>
            make("span", {class: "place"}, makeName(this.index.data.files[file]),
                 makeCopyButton(this.index.data.files[file])))]);
        return makeFacts(rows);
    }

    #makeMounts(id) {
        const total = this.index.mountsByAgent.sizeOf(id);
        const section = make("section", {},
                             make("h3", {}, counted(total, "mount"), this.#makeUse(id)));
        if (total === 0) {
            section.append(make("p", {class: "none"}, "This agent mounts nothing."));
            return section;
        }
        const result = make("div");
        const showFound = (text) => this.#showFound(id, text, result);
        if (total > 12)
            section.append(this.#makeFilter(showFound));
        section.append(result);
        showFound("");
        return section;
    }

    #makeUse(id) {
        const mounts = this.index.mountsByAgent.of(id);
        const written = mounts.filter((mount) => this.index.writes(mount)).length;
        const read = mounts.filter((mount) => this.index.reads(mount)).length;
        return make("span", {class: "aside-text"}, `${written} written, ${read} read`);
    }

    #makeFilter(showFound) {
        const input = make("input", {
            type: "search", class: "filter", "aria-label": "Search this agent’s mounts",
            placeholder: "Search these mounts: path, type:… flag:…", spellcheck: "false",
            autocomplete: "off",
        });
        const box = new SearchBox(input, {
            search: (text) => showFound(text),
            leave: () => input.closest("section").querySelector("tbody button")?.focus(),
        });
        return box.input;
    }

    #showFound(id, text, result) {
        const query = parseQuery(text, "path");
        const mounts = searchMountsOf(this.index, id, query);
        if (!isEmptyQuery(query))
            announce(counted(mounts.length, "mount"));
        if (mounts.length === 0) {
            result.replaceChildren(makeEmpty("No mount matches."));
            return;
        }
        const table = make("table", {class: "data mounts"}, makeMountHead());
        const more = appendInPieces(table, mounts, (mount) => this.#makeMount(mount), mountsAtOnce,
                                    "mount");
        result.replaceChildren(make("div", {class: "table-box"}, table), more);
    }

    // A row, and below it what is told of the mount, once somebody opens it.
    #makeMount(mount) {
        const {p} = this.index.paths[this.index.pathOf[mount]];
        const details = make("tr", {class: "unfolded", hidden: true});
        const button = make("button", {type: "button", class: "twist-button",
                                       "aria-expanded": "false",
                                       "aria-label": `Lines of ${visibleText(p)}`});
        button.addEventListener("click", () => this.#unfold(mount, button, details));
        const row = make("tr", {}, make("td", {class: "twist-cell"}, button),
                         make("th", {scope: "row"}, makeLink(pathRoute(p), makePath(p))),
                         make("td", {class: "type"}, makeName(this.index.typeOf(mount))),
                         make("td", {}, makeFlags(this.index.flagTextOf(mount))),
                         make("td", {}, ...this.#makeFirstPlace(mount)));
        return make("tbody", {}, row, details);
    }

    #makeFirstPlace(mount) {
        const lines = this.index.linesOf(mount);
        if (lines.length === 0)
            return [];
        const {f, l} = this.index.lines[lines[0]];
        const more = lines.length - 1;
        return [makePlace(this.index.placeText([f, l])),
                more > 0 ? make("span", {class: "aside-text"}, `and ${more} more`) : null];
    }

    #unfold(mount, button, details) {
        if (!details.hasChildNodes())
            details.append(make("td", {}),
                           make("td", {colspan: "4"}, makeMountLines(this.index, mount),
                                makeOtherMounts(this.index, mount)));
        details.hidden = !details.hidden;
        button.setAttribute("aria-expanded", String(!details.hidden));
    }
}

function makeMountHead() {
    const titles = ["", "Path", "Type", "Flags", "Place"];
    return make("thead", {}, make("tr", {}, ...titles.map(
        (title) => title === "" ? make("td", {}) : make("th", {scope: "col"}, title))));
}
