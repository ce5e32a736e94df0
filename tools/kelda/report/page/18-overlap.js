// Which paths may be the same one: those that have an instance in common, as "*" stands for a value
// that only an agent string gives.

class OverlapIndex {
    #overlaps = new Map();

    constructor(tree, names) {
        this.root = tree.root;
        this.names = names;
    }

    /** The other paths that may be the same as this one, in order. */
    of(id) {
        let found = this.#overlaps.get(id);
        if (!found) {
            found = [];
            this.#collect(this.root, this.names[id], 0, found);
            found = found.filter((other) => other !== id).sort((a, b) => a - b);
            this.#overlaps.set(id, found);
        }
        return found;
    }

    #collect(node, names, at, found) {
        if (at === names.length) {
            if (node.id >= 0)
                found.push(node.id);
            return;
        }
        for (const child of this.#childrenMeeting(node, names[at]))
            this.#collect(child, names, at + 1, found);
    }

    #childrenMeeting(node, name) {
        const exact = node.byName.get(name);
        const candidates = name.includes("*") ? node.children : starChildrenOf(node);
        const meeting = candidates.filter(
            (child) => child !== exact && textsMeet(child.name, name));
        return exact ? [exact, ...meeting] : meeting;
    }
}

function starChildrenOf(node) {
    node.starChildren ??= node.children.filter((child) => child.name.includes("*"));
    return node.starChildren;
}

// As segmentsMeet, but "?" is an ordinary character of a path.
function textsMeet(a, b) {
    if (a === b || a === "*" || b === "*")
        return true;
    return charactersMeet(plainCharacters(a), plainCharacters(b));
}

function plainCharacters(text) {
    return Array.from(text, (character) => character === "?" ? "a plain ?" : character);
}

/** Whether two paths may be the same one. */
function pathsMeet(a, b) {
    const names = b.split("/");
    const others = a.split("/");
    return names.length === others.length && names.every((name, at) => textsMeet(name, others[at]));
}
