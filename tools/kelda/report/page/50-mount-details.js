// What is told of a mount: each line that makes it, with its place, and what its tokens and aliases
// stand for.

const originWords = {
    token: "token of the agent’s name",
    aliasLine: "alias",
    everyProfile: "known to every profile",
    agentString: "the agent’s own name",
    undefined: "not defined",
};

/** A line with its place, as it is written, and all that belongs to it. */
function makeMountLine(index, id) {
    const line = index.lines[id];
    const box = make("div", {class: "mount-line"});
    const places = make("p", {class: "places"}, makePlace(index.placeText([line.f, line.l])));
    if (line.i)
        places.append(make("span", {class: "included"}, "included from ",
                           makePlace(index.placeText(line.i))));
    box.append(places);
    if (line.t !== undefined)
        box.append(make("pre", {class: "written"}, makeName(line.t)));
    if (line.x?.length > 0)
        box.append(makeExpansions(index, line.x));
    if (line.g || line.c)
        box.append(makeCircumstances(line));
    return box;
}

function makeExpansions(index, expansions) {
    const table = make("table", {class: "expansions"},
                       make("caption", {class: "off-screen"}, "What tokens and aliases stand for"));
    const body = make("tbody");
    for (const part of expansions)
        body.append(make("tr", {}, make("th", {scope: "row"}, makeName(part.n)),
                         make("td", {class: "value"}, make("span", {class: "arrow"}, "→ "),
                              makeValue(part.v)),
                         make("td", {class: "origin"}, ...originOf(index, part))));
    table.append(body);
    return table;
}

function makeValue(value) {
    if (value === "")
        return make("span", {class: "none"}, "nothing");
    return value === "*" ? make("span", {class: "name star", title: "any value"}, "*")
                         : makeName(value);
}

function originOf(index, part) {
    const words = originWords[part.o] ?? part.o;
    const hasPlace = part.f !== undefined && part.f >= 0 && part.l > 0;
    const origin = hasPlace ? [`${words}, `, makePlace(index.placeText([part.f, part.l]))]
                            : [words];
    if (part.e && part.e !== part.v)
        origin.push(make("div", {class: "expression"}, "= ", makeName(part.e)));
    return origin;
}

function makeCircumstances(line) {
    const facts = make("p", {class: "circumstances"});
    if (line.g)
        facts.append(make("span", {class: "tag"}, "group ", makeName(line.g)));
    if (line.c)
        facts.append(make("span", {class: "tag condition"}, makeName(line.c)));
    return facts;
}

function makeMountLines(index, mount) {
    return make("div", {class: "mount-lines"},
                ...index.linesOf(mount).map((line) => makeMountLine(index, line)));
}

function makeAgentLink(index, agent) {
    const {name, faultCount = 0} = index.agents[agent];
    const link = makeLink(agentRoute(name), makeName(name), {class: "chip"});
    if (faultCount > 0)
        link.append(make("span", {class: "fault-mark", title: counted(faultCount, "fault")}, "!"));
    return link;
}

/** Mounts of one path; such as come to it by the same lines with the same flags stand together. */
function groupMounts(index, mounts) {
    const groups = new Map();
    for (const mount of mounts) {
        const key = `${index.flagsOf[mount]}:${index.linesOf(mount).join(",")}:` +
                    (index.otherTypeOf(mount) ?? "");
        if (!groups.has(key))
            groups.set(key, []);
        groups.get(key).push(mount);
    }
    return Array.from(groups.values());
}

function makeMountGroup(index, mounts) {
    const agents = make("div", {class: "chips"});
    const more = appendInPieces(agents, mounts,
                                (mount) => makeAgentLink(index, index.agentOf[mount]), 24, "agent");
    const heading = make("div", {class: "card-head"},
                         make("div", {class: "card-agents"}, agents, more),
                         makeFlags(index.flagTextOf(mounts[0])));
    const otherType = index.otherTypeOf(mounts[0]);
    if (otherType !== undefined)
        heading.append(make("span", {class: "tag"}, "as ", makeName(otherType)));
    return make("li", {class: "card"}, heading, makeMountLines(index, mounts[0]));
}

/** Who else mounts a path: agents with their flags. */
function makeOtherMounts(index, mount) {
    const path = index.pathOf[mount];
    const others = Array.from(index.mountsByPath.of(path)).filter((other) => other !== mount);
    if (others.length === 0)
        return make("p", {class: "others none"}, "Nobody else mounts this path.");
    const list = make("ul", {class: "chips"});
    const makeOther = (other) => make("li", {}, makeAgentLink(index, index.agentOf[other]),
                                      makeFlags(index.flagTextOf(other)));
    const more = appendInPieces(list, others, makeOther, 16, "agent");
    return make("div", {class: "others"},
                make("h4", {}, `Also mounted by ${counted(others.length, "agent")}`), list, more);
}
