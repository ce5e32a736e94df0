// Patterns, read as the program's other commands read them: "*" is any text within a segment, "?"
// one character and "**", as a whole segment, any number of segments. In a path of the device "*"
// stands for the value of a token, which is any text within a segment, too.
"use strict";

function hasWildcard(text) {
    return text.includes("*") || text.includes("?");
}

/** Whether a pattern ("*", "?") and a segment of a path ("*") have an instance in common. */
function segmentsMeet(pattern, text) {
    if (pattern === text || pattern === "*" || text === "*")
        return true;
    if (!hasWildcard(pattern) && !text.includes("*"))
        return false;
    return charactersMeet(Array.from(pattern), Array.from(text));
}

// reached[i]: the first i characters of the pattern have an instance in common with what was read
// of the text. Takes as many steps as the product of both lengths, whatever the pattern.
function charactersMeet(pattern, text) {
    const reached = new Array(pattern.length + 1).fill(false);
    reached[0] = true;
    for (let i = 0; pattern[i] === "*"; ++i)
        reached[i + 1] = true;
    for (const character of text) {
        if (character === "*")
            readStar(reached);
        else
            readCharacter(pattern, reached, character);
    }
    return reached[pattern.length];
}

// The text's star takes in whatever the pattern goes on with.
function readStar(reached) {
    for (let i = 1; i < reached.length; ++i)
        reached[i] ||= reached[i - 1];
}

function readCharacter(pattern, reached, character) {
    let before = reached[0];
    reached[0] = false;
    for (let i = 1; i < reached.length; ++i) {
        const same = reached[i];
        const wanted = pattern[i - 1];
        if (wanted === "*")
            reached[i] = same || before || reached[i - 1];
        else
            reached[i] = before && (wanted === "?" || wanted === character);
        before = same;
    }
}

/** A pattern of paths. A "/" at its end does not count. */
class PathPattern {
    constructor(pattern) {
        const text = pattern.endsWith("/") ? pattern.slice(0, -1) : pattern;
        this.segments = text.split("/");
        this.known = this.segments.map(() => new Map()); // names are the same again and again
    }

    #fits(segment, name) {
        let fits = this.known[segment].get(name);
        if (fits === undefined)
            this.known[segment].set(name, fits = segmentsMeet(this.segments[segment], name));
        return fits;
    }

    /** Whether some path without "*" is an instance of both the pattern and the path. */
    matches(path) {
        return this.matchesNames(path.split("/"));
    }

    // The same for the names of a path. Behind a "**" the rest is tried at one name after another;
    // what stands before a further "**" may well take the first place where it fits.
    matchesNames(names) {
        let segment = 0;
        let behindAny = -1;
        let retry = 0;
        for (let at = 0; at < names.length;) {
            if (this.segments[segment] === "**") {
                behindAny = ++segment;
                retry = at;
            } else if (segment < this.segments.length && this.#fits(segment, names[at])) {
                ++segment;
                ++at;
            } else if (behindAny < 0) {
                return false;
            } else {
                segment = behindAny;
                at = ++retry;
            }
        }
        while (this.segments[segment] === "**")
            ++segment;
        return segment === this.segments.length;
    }
}

/** Whether a text as a whole is an instance of a pattern in which only "*" has a meaning. */
function matchesStars(text, pattern) {
    const parts = pattern.split("*");
    if (parts.length === 1)
        return text === pattern;
    const first = parts[0];
    const last = parts[parts.length - 1];
    if (!text.startsWith(first))
        return false;
    let at = first.length;
    for (const part of parts.slice(1, -1)) {
        const found = text.indexOf(part, at);
        if (found < 0)
            return false;
        at = found + part.length;
    }
    return text.length - at >= last.length && text.endsWith(last);
}
