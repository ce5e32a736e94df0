// Who writes what others read. A path counts for a writer and a reader when the writer's mount has
// "w" and the reader has a mount with "r" of this path or of one that may be the same. Where a
// mount names its own agent, that name stands in the path; two such mounts never meet, as names
// differ.

class AgentMatrix {
    #index;
    #overlaps;
    #counts = new Map(); // for each writer the number of paths for each reader
    #ownPaths = new Map();

    constructor(index, overlaps) {
        this.#index = index;
        this.#overlaps = overlaps;
        this.#countAll();
        this.pairs = this.#sortedPairs(); // {writer, reader, count}, most first
        this.most = this.pairs.length > 0 ? this.pairs[0].count : 0;
    }

    countOf(writer, reader) {
        return this.#counts.get(writer)?.[reader] ?? 0;
    }

    /** The paths of a pair, in order: [{written: mount, read: [mount, ...]}, ...] */
    meetings(writer, reader) {
        const index = this.#index;
        const meetings = [];
        for (const written of index.mountsByAgent.of(writer)) {
            if (!index.writes(written))
                continue;
            const read = this.#readersOfPath(index.pathOf[written]).filter(
                (mount) => index.agentOf[mount] === reader && this.#meets(written, mount));
            if (read.length > 0)
                meetings.push({written, read});
        }
        return meetings.sort((a, b) => index.pathOf[a.written] - index.pathOf[b.written]);
    }

    // The mounts that read this path, or one that may be the same.
    #readersOfPath(path) {
        const index = this.#index;
        const readers = [];
        for (const same of [path, ...this.#overlaps.of(path)])
            for (const mount of index.mountsByPath.of(same))
                if (index.reads(mount))
                    readers.push(mount);
        return readers;
    }

    #meets(written, read) {
        const index = this.#index;
        if (index.agentOf[written] === index.agentOf[read])
            return false;
        const isOwn = index.isOwn(written);
        if (isOwn === index.isOwn(read))
            return !isOwn;
        const other = index.pathTextOf(isOwn ? read : written);
        return this.#ownPathsOf(isOwn ? written : read).some((path) => pathsMeet(path, other));
    }

    #ownPathsOf(mount) {
        if (!this.#ownPaths.has(mount))
            this.#ownPaths.set(mount, this.#index.ownPathsOf(mount));
        return this.#ownPaths.get(mount);
    }

    #countAll() {
        const index = this.#index;
        const lastMet = new Int32Array(index.agents.length).fill(-1); // by which writing mount
        for (let path = 0; path < index.paths.length; ++path) {
            const writers = index.mountsByPath.of(path).filter((mount) => index.writes(mount));
            const readers = writers.length > 0 ? this.#readersOfPath(path) : [];
            for (const written of writers)
                this.#countReaders(written, readers, lastMet);
        }
    }

    // An agent counts once, by however many mounts it reads.
    #countReaders(written, readers, lastMet) {
        const {agentOf} = this.#index;
        const counts = this.#countsOf(agentOf[written]);
        for (const read of readers) {
            const reader = agentOf[read];
            if (lastMet[reader] === written || !this.#meets(written, read))
                continue;
            lastMet[reader] = written;
            ++counts[reader];
        }
    }

    #countsOf(writer) {
        let counts = this.#counts.get(writer);
        if (!counts)
            this.#counts.set(writer, counts = new Uint32Array(this.#index.agents.length));
        return counts;
    }

    #sortedPairs() {
        const pairs = [];
        for (const [writer, counts] of this.#counts)
            counts.forEach((count, reader) => {
                if (count > 0)
                    pairs.push({writer, reader, count});
            });
        return pairs.sort(
            (a, b) => b.count - a.count || a.writer - b.writer || a.reader - b.reader);
    }
}
