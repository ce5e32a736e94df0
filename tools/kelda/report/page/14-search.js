// Searching: a text of words is read as a query, and a query asked of the device.

const searchFields = ["path", "agent", "type", "flag"];

/** {path: [...], agent: [...], ...} by field; words without a field belong to `plain`. */
function parseQuery(text, plain) {
    const query = {path: [], agent: [], type: [], flag: []};
    for (const word of text.split(/\s+/).filter((part) => part !== "")) {
        const field = searchFields.find((name) => word.toLowerCase().startsWith(`${name}:`));
        const value = field ? word.slice(field.length + 1) : word;
        if (value !== "")
            query[field ?? plain].push(value);
    }
    return query;
}

function isEmptyQuery(query) {
    return searchFields.every((field) => query[field].length === 0);
}

/** A test of a name: a pattern, whose case counts, or a part of it, whose case does not. */
function nameTest(word) {
    if (word.includes("*"))
        return (name) => matchesStars(name, word);
    const part = word.toLowerCase();
    return (name) => name.toLowerCase().includes(part);
}

/** A test of a path by its place. A path that is written out also finds the pattern of it. */
function pathTest(index, word) {
    const {lowerPaths, names} = index;
    const pattern = new PathPattern(word);
    if (hasWildcard(word))
        return (path) => pattern.matchesNames(names[path]);
    const part = word.toLowerCase();
    if (!word.includes("/"))
        return (path) => lowerPaths[path].includes(part);
    return (path) => lowerPaths[path].includes(part) ||
                     (lowerPaths[path].includes("*") && pattern.matchesNames(names[path]));
}

function passesAll(tests, value) {
    return tests.every((test) => test(value));
}

/** What a query says, as tests of mounts and paths; names are looked at once. */
class Matcher {
    constructor(index, query) {
        this.index = index;
        const agentTests = query.agent.map(nameTest);
        this.pathTests = query.path.map((word) => pathTest(index, word));
        this.typeTests = query.type.map(nameTest);
        this.types = new Map(); // whether they pass, by type
        this.agents = index.agents.map((agent) => passesAll(agentTests, agent.name));
        this.flags = index.flags.map(
            (flags) => query.flag.every((letters) => holdsFlags(flags, letters)));
        this.needsMount = query.agent.length > 0 || query.flag.length > 0;
        this.needsMountOfAgent = query.path.length + query.type.length + query.flag.length > 0;
    }

    pathFits(id) {
        return passesAll(this.pathTests, id);
    }

    typeFits(type) {
        if (this.typeTests.length === 0)
            return true;
        if (!this.types.has(type))
            this.types.set(type, passesAll(this.typeTests, type));
        return this.types.get(type);
    }

    /** Whether all of a mount but its path fits; `typeOfPathFits`: the type it mostly has. */
    mountFits(mount, typeOfPathFits) {
        const {agent, flags, otherTypes} = this.index.columns;
        if (!this.agents[agent[mount]] || !this.flags[flags[mount]])
            return false;
        const other = otherTypes.size > 0 ? otherTypes.get(mount) : undefined;
        return other === undefined ? typeOfPathFits : this.typeFits(other);
    }

    /** How many mounts of a path fit. */
    mountsThatFit(path, typeOfPathFits) {
        if (!this.needsMount && this.index.columns.otherTypes.size === 0)
            return typeOfPathFits ? this.index.mountsByPath.sizeOf(path) : 0;
        let mounts = 0;
        for (const mount of this.index.mountsByPath.of(path))
            mounts += this.mountFits(mount, typeOfPathFits) ? 1 : 0;
        return mounts;
    }
}

/**
 * The paths that match, and how many mounts of them do. Where the query has an agent or a flag, one
 * mount of the path must have them all.
 */
function searchPaths(index, query) {
    const matcher = new Matcher(index, query);
    const found = {paths: [], mounts: 0};
    for (let path = 0; path < index.paths.length; ++path) {
        if (!matcher.pathFits(path))
            continue;
        const typeFits = matcher.typeFits(index.typeOfPath(path));
        const mounts = matcher.mountsThatFit(path, typeFits);
        found.mounts += mounts;
        if (mounts > 0 || (typeFits && !matcher.needsMount))
            found.paths.push(path);
    }
    return found;
}

/** The agents that match, in order. One mount must have all that the query says beside the name. */
function searchAgents(index, query) {
    const matcher = new Matcher(index, query);
    const ids = [...index.agents.keys()].filter((agent) => matcher.agents[agent]);
    if (!matcher.needsMountOfAgent)
        return ids;
    const paths = index.paths.map((_, path) => matcher.pathFits(path));
    const types = index.paths.map((_, path) => matcher.typeFits(index.typeOfPath(path)));
    const fits = (mount) => paths[index.pathOf[mount]] &&
                            matcher.mountFits(mount, types[index.pathOf[mount]]);
    return ids.filter((agent) => index.mountsByAgent.of(agent).some(fits));
}

/** The mounts of an agent that match, in the order of their paths. */
function searchMountsOf(index, agent, query) {
    const matcher = new Matcher(index, query);
    const fits = (mount) => {
        const path = index.pathOf[mount];
        return matcher.pathFits(path) &&
               matcher.mountFits(mount, matcher.typeFits(index.typeOfPath(path)));
    };
    return Array.from(index.mountsByAgent.of(agent)).filter(fits)
        .sort((a, b) => index.pathOf[a] - index.pathOf[b]);
}

/** The findings of the severities that hold every word, in the order errors, warnings, notes. */
function searchFindings(index, text, severities) {
    const words = text.toLowerCase().split(/\s+/).filter((word) => word !== "");
    const holdsWords = (finding) => {
        if (words.length === 0)
            return true;
        const place = index.placeOfFinding(finding);
        const texts = [finding.message, finding.rule, place, finding.hint ?? ""];
        const all = texts.join(" ").toLowerCase();
        return words.every((word) => all.includes(word));
    };
    return severities.flatMap((severity) => index.findings.filter(
        (finding) => finding.severity === severity && holdsWords(finding)));
}
