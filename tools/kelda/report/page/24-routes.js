// What stands behind the "#" of the page's address: a view, what is chosen in it, and its search.
//   #/path/hardware/fan/policy?q=agent:Fan*    #/agent/FanTray-%25tray    #/findings?show=error
//   #/matrix/FanTray-%25tray/Thermal

const viewNames = ["path", "agent", "findings", "matrix"];

function encodePart(text) {
    try {
        return encodeURIComponent(text).replace(/%3A/g, ":");
    } catch {
        return ""; // half a character, which no name of the device holds
    }
}

function decodePart(text) {
    try {
        return decodeURIComponent(text);
    } catch {
        return text;
    }
}

/** {view, names: [...], q, show}; anything unknown leads to the paths. */
function parseRoute(hash) {
    const [, address, search] = /^#?\/?([^?]*)\??(.*)$/s.exec(hash);
    const [view, ...names] = address.split("/");
    const options = new URLSearchParams(search);
    return {
        view: viewNames.includes(view) ? view : viewNames[0],
        names: viewNames.includes(view) ? names.map(decodePart) : [],
        q: options.get("q") ?? "",
        show: options.get("show") ?? "",
    };
}

function routeText({view, names = [], q = "", show = ""}) {
    const options = [];
    if (q !== "")
        options.push(`q=${encodePart(q)}`);
    if (show !== "")
        options.push(`show=${encodePart(show)}`);
    const address = ["#", view, ...names.map(encodePart)].join("/");
    return options.length > 0 ? `${address}?${options.join("&")}` : address;
}

/** The addresses of a path and an agent. */
function pathRoute(path, q = "") {
    return routeText({view: "path", names: path.split("/"), q});
}

function agentRoute(agent, q = "") {
    return routeText({view: "agent", names: [agent], q});
}
