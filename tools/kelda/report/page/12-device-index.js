// The device's data, with what is looked up in it. Each index is made when it is first asked for.
// Agents, paths, lines and mounts are called by their place in the data's lists.

/** For each of `count` owners the members that `ownerOf` gives it, in their order. */
class Grouping {
    constructor(ownerOf, count) {
        this.begin = new Int32Array(count + 1);
        this.members = new Int32Array(ownerOf.length);
        for (const owner of ownerOf)
            ++this.begin[owner + 1];
        for (let i = 0; i < count; ++i)
            this.begin[i + 1] += this.begin[i];
        const next = this.begin.slice();
        ownerOf.forEach((owner, member) => { this.members[next[owner]++] = member; });
    }

    of(owner) {
        return this.members.subarray(this.begin[owner], this.begin[owner + 1]);
    }

    sizeOf(owner) {
        return this.begin[owner + 1] - this.begin[owner];
    }
}

// The mounts by column, which is what searches run through.
function columnsOf(mounts) {
    const columns = {
        agent: new Int32Array(mounts.length),
        path: new Int32Array(mounts.length),
        flags: new Int32Array(mounts.length),
        otherTypes: new Map(), // of the few that have another type than their path
    };
    for (let mount = 0; mount < mounts.length; ++mount) {
        const row = mounts[mount];
        columns.agent[mount] = row[0];
        columns.path[mount] = row[1];
        columns.flags[mount] = row[2];
        if (row[4] !== undefined)
            columns.otherTypes.set(mount, row[4]);
    }
    return columns;
}

class DeviceIndex {
    #columns;
    #byPath;
    #byAgent;
    #lowerPaths;
    #names;
    #agentIds;
    #ownMounts;

    constructor(data) {
        this.data = data;
        this.agents = data.agents ?? [];
        this.paths = data.paths ?? [];
        this.lines = data.lines ?? [];
        this.mounts = data.mounts ?? [];
        this.flags = data.flags ?? [];
        this.findings = data.findings ?? [];
        this.flagsRead = this.flags.map((flags) => flags.includes("r"));
        this.flagsWrite = this.flags.map((flags) => flags.includes("w"));
    }

    get columns() { return this.#columns ??= columnsOf(this.mounts); }
    get agentOf() { return this.columns.agent; }
    get pathOf() { return this.columns.path; }
    get flagsOf() { return this.columns.flags; }
    get mountsByPath() { return this.#byPath ??= new Grouping(this.pathOf, this.paths.length); }
    get mountsByAgent() { return this.#byAgent ??= new Grouping(this.agentOf, this.agents.length); }
    get lowerPaths() { return this.#lowerPaths ??= this.paths.map((path) => path.p.toLowerCase()); }
    /** The names that each path consists of. */
    get names() { return this.#names ??= this.paths.map((path) => path.p.split("/")); }
    get agentIds() {
        return this.#agentIds ??= new Map(this.agents.map((agent, id) => [agent.name, id]));
    }

    linesOf(mount) {
        return this.mounts[mount][3];
    }

    typeOfPath(path) {
        return this.paths[path].t ?? "";
    }

    /** The type of a mount that has another one than its path; undefined for most. */
    otherTypeOf(mount) {
        return this.columns.otherTypes.get(mount);
    }

    typeOf(mount) {
        return this.otherTypeOf(mount) ?? this.typeOfPath(this.pathOf[mount]);
    }

    pathTextOf(mount) {
        return this.paths[this.pathOf[mount]].p;
    }

    flagTextOf(mount) {
        return this.flags[this.flagsOf[mount]];
    }

    reads(mount) {
        return this.flagsRead[this.flagsOf[mount]];
    }

    writes(mount) {
        return this.flagsWrite[this.flagsOf[mount]];
    }

    /** "file:line" of a pair of a file and a line. */
    placeText([file, line]) {
        return `${this.data.files[file]}:${line}`;
    }

    /** "file:line:column" of a finding, as far as it has them. */
    placeOfFinding({file = -1, line, column = 0}) {
        if (file < 0)
            return "";
        return this.placeText([file, line]) + (column > 0 ? `:${column}` : "");
    }

    /** Whether all lines of a mount name the agent itself, so that no other agent has its path. */
    isOwn(mount) {
        this.#ownMounts ??= ownMountsOf(this.mounts, this.lines);
        return this.#ownMounts[mount] === 1;
    }

    /** The paths of such a mount, with each name of the agent in them. */
    ownPathsOf(mount) {
        return ownPaths(this.lines[this.linesOf(mount)[0]], this.agents[this.agentOf[mount]]);
    }
}

function ownMountsOf(mounts, lines) {
    const namesItself = lines.map(
        (line) => (line.x ?? []).some((part) => part.o === "agentString"));
    return Uint8Array.from(mounts, ([, , , ids]) =>
        ids.length > 0 && ids.every((line) => namesItself[line]) ? 1 : 0);
}

// The paths of a line as the agent has them. Sub-agents stand in its place where there are any.
function ownPaths(line, {name, subAgents = []}) {
    const parts = [...line.x].sort((a, b) => b.n.length - a.n.length);
    return (subAgents.length > 0 ? subAgents : [name]).map((own) => {
        const known = own.replace(/%[A-Za-z0-9_]+\$?/g, "*");
        return parts.reduce((path, part) => path.replaceAll(
            part.n, () => part.o === "agentString" ? known : part.v), line.p);
    });
}

/** Whether the flags hold each of the letters; "r" and "w" imply "y". */
function holdsFlags(flags, letters) {
    return Array.from(letters).every(
        (letter) => flags.includes(letter) || (letter === "y" && /[rw]/.test(flags)));
}
