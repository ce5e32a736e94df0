// The agents: a list with its search at the left.

class AgentView {
    #chosen = null;
    #query = null;

    constructor(page) {
        this.page = page;
        this.index = page.index;
        this.details = new AgentDetails(page, document.getElementById("agent-details"));
        this.box = document.getElementById("agent-list");
        this.count = document.getElementById("agent-count");
        this.empty = document.getElementById("agent-empty");
        this.list = new RowList(this.box, {
            rowHeight: 32,
            fillRow: (agent) => this.#fillRow(agent),
            labelOf: (agent) => this.index.agents[agent].name,
            choose: (agent) => page.go(agentRoute(this.index.agents[agent].name, this.search.text)),
        });
        this.list.isChosen = (agent) => this.index.agents[agent].name === this.#chosen;
        this.search = new SearchBox(document.getElementById("agent-search"), {
            search: (text) => this.#onSearch(text),
            leave: () => this.box.focus(),
        });
    }

    show(route) {
        this.search.text = route.q;
        const name = route.names.join("/");
        const isOther = name !== this.#chosen;
        this.#chosen = name;
        if (this.#query !== route.q)
            this.#applySearch(route.q);
        const id = this.index.agentIds.get(name);
        const at = this.list.rows.indexOf(id);
        if (isOther && at >= 0)
            this.list.moveTo(at);
        this.list.draw();
        if (isOther)
            this.details.show(name, id);
        return name === "" ? "Agents" : name;
    }

    #onSearch(text) {
        this.#applySearch(text);
        this.page.replaceRoute({view: "agent", names: this.#chosen ? [this.#chosen] : [], q: text});
    }

    #applySearch(text) {
        this.#query = text;
        const agents = searchAgents(this.index, parseQuery(text, "agent"));
        this.count.textContent = counted(agents.length, "agent");
        this.empty.hidden = agents.length > 0;
        this.box.hidden = agents.length === 0;
        this.empty.replaceChildren(makeEmpty(
            this.index.agents.length > 0 ? "No agent matches." : "No profile names an agent."));
        this.box.scrollTop = 0;
        this.list.show(agents, Math.max(agents.indexOf(this.index.agentIds.get(this.#chosen)), 0));
    }

    #fillRow(agent) {
        const {name, faultCount = 0, active} = this.index.agents[agent];
        const mounts = this.index.mountsByAgent.sizeOf(agent);
        const row = make("div", {title: visibleText(name)}, makeName(name));
        if (active)
            row.append(make("span", {class: "tag small"}, "active"));
        if (faultCount > 0)
            row.append(make("span", {class: "severity error small"}, counted(faultCount, "fault")));
        row.append(make("span", {class: "badge", title: counted(mounts, "mount"),
                                 "aria-label": counted(mounts, "mount")}, String(mounts)));
        return row;
    }
}
