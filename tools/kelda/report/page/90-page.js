// The page: reads the data, follows the address, and holds what the views share.

const titleOfPage = visibleText(document.title);

class Page {
    #tree;
    #overlaps;
    #themeListeners = [];
    #isFirst = true;

    constructor(data) {
        this.index = new DeviceIndex(data);
        this.views = {};
        this.lastRoutes = new Map();
        this.makers = {path: PathView, agent: AgentView, findings: FindingsView,
                       matrix: MatrixView};
        this.#watchTheme();
        window.addEventListener("hashchange", () => this.follow());
        document.addEventListener("keydown", (event) => this.#onKey(event));
        document.querySelector(".skip").addEventListener("click", (event) => {
            event.preventDefault();
            document.getElementById("main").focus();
        });
        this.#showFigures();
    }

    get tree() { return this.#tree ??= new PathTree(this.index.names); }
    get overlaps() { return this.#overlaps ??= new OverlapIndex(this.tree, this.index.names); }

    /** What the search for paths holds. */
    get query() { return this.views.path?.search.text ?? ""; }

    go(address) {
        if (location.hash !== address)
            location.hash = address;
        else
            this.follow();
    }

    /** The address changes, the page does not: nothing to go back to for each letter typed. */
    replaceRoute(route) {
        const address = routeText(route);
        try {
            history.replaceState(null, "", address);
        } catch {
            return; // browsers limit how often; the search itself is done
        }
        this.#rememberRoute(route.view, address);
    }

    /** Shows what the address says. */
    follow() {
        const route = parseRoute(location.hash);
        for (const name of viewNames) {
            document.getElementById(`view-${name}`).hidden = name !== route.view;
            const link = document.getElementById(`link-${name}`);
            name === route.view ? link.setAttribute("aria-current", "page")
                                : link.removeAttribute("aria-current");
        }
        this.#rememberRoute(route.view, location.hash || "#/path");
        this.view = this.views[route.view] ??= new this.makers[route.view](this);
        const title = visibleText(this.view.show(route));
        document.title = `${title} – ${titleOfPage}`;
        if (!this.#isFirst)
            this.#afterMove(title);
        this.#isFirst = false;
    }

    // Who followed a link that is gone from sight goes on at the heading of what came.
    #afterMove(title) {
        announce(title);
        const at = document.activeElement;
        if (at && at !== document.body && at.isConnected && at.offsetParent !== null)
            return;
        const section = document.querySelector("main > section:not([hidden])");
        (section.querySelector(".details h2") ?? document.getElementById("main")).focus();
    }

    // A view's link leads back to where it was left.
    #rememberRoute(view, address) {
        document.getElementById(`link-${view}`).href = address;
    }

    #onKey(event) {
        if (event.key !== "/" || event.ctrlKey || event.altKey || event.metaKey ||
            event.target.closest?.("input, textarea, select"))
            return;
        event.preventDefault();
        this.view.search.focus();
    }

    #showFigures() {
        document.querySelector(".brand").textContent = titleOfPage;
        const figures = {path: this.index.paths.length, agent: this.index.agents.length,
                         findings: this.index.findings.length};
        for (const [view, count] of Object.entries(figures))
            document.getElementById(`link-${view}`).append(
                " ", make("span", {class: "badge"}, count.toLocaleString("en")));
    }

    /** Calls the listener when light becomes dark or the other way round. */
    onTheme(listener) {
        this.#themeListeners.push(listener);
    }

    #watchTheme() {
        const tell = () => this.#themeListeners.forEach((listener) => listener());
        matchMedia("(prefers-color-scheme: dark)").addEventListener("change", tell);
        document.getElementById("theme").addEventListener("change", (event) => {
            document.documentElement.dataset.theme = event.target.value;
            tell();
        });
    }
}

// A line may refer to an earlier one that says the same, which keeps the data small.
function completeLines(lines) {
    for (const line of lines) {
        if (line.s !== undefined) {
            line.t = lines[line.s].t;
            line.p = lines[line.s].p;
        }
        if (line.y !== undefined)
            line.x = lines[line.y].x;
    }
}

function readData() {
    const data = JSON.parse(document.getElementById("device-data").textContent);
    if (data.schemaVersion !== 1)
        throw new Error(`data of version ${data.schemaVersion}`);
    completeLines(data.lines ?? []);
    return data;
}

// What the first search would have to make, one index at a time while nobody waits.
function prepareSearch(index) {
    const steps = [() => index.mountsByPath, () => index.lowerPaths, () => index.mountsByAgent];
    const next = () => {
        steps.shift()?.();
        if (steps.length > 0)
            setTimeout(next, 20);
    };
    setTimeout(next, 50);
}

function start() {
    try {
        const page = new Page(readData());
        page.follow();
        document.body.classList.add("ready");
        performance.mark("kelda-ready");
        prepareSearch(page.index);
    } catch (error) {
        document.getElementById("main").replaceChildren(
            makeEmpty("This page cannot show its data.",
                      make("p", {}, visibleText(String(error)))));
        throw error;
    }
}

start();
