// @libnote/web: libNote's pages in WebAssembly. The note's bytes go into the module's
// in-memory file system and are read there by path, exactly as on Linux; nothing leaves the
// machine.

import createLibNote from './libnote.mjs';

// Whole scales repeat pixels: beyond this a page takes hundreds of megabytes.
const MAX_SCALE = 4;

let modulePromise = null;
let callLog = [];
let nextNote = 0;

// A note the library refuses, in the words notetool prints after "notetool: ".
export class NoteError extends Error {
    constructor(message, code, log) {
        super(message);
        this.name = 'NoteError';
        this.code = code; // the library's status, 0 when the failure has none
        this.log = log; // what the library wrote to its log during the call
    }
}

// The .wasm's bytes, fetched beside this file or read from disk under Node.js. The module's
// own loader cannot do either there (emscripten 3.1.6).
async function wasmBinary() {
    const url = new URL('./libnote.wasm', import.meta.url);
    if (url.protocol === 'file:') {
        const { readFile } = await import('node:fs/promises');
        return readFile(url);
    }
    const response = await fetch(url);
    if (!response.ok) throw new Error(`${url}: ${response.status} ${response.statusText}`);
    return new Uint8Array(await response.arrayBuffer());
}

// One instance serves every note. The library's log is kept for the call that wrote it,
// never printed.
function loadModule() {
    modulePromise ??= wasmBinary()
        .then((binary) =>
            createLibNote({
                wasmBinary: binary,
                print: (text) => callLog.push(text),
                printErr: (text) => callLog.push(text),
            }),
        )
        .catch((error) => {
            modulePromise = null;
            throw error;
        });
    return modulePromise;
}

function noteBytes(bytes) {
    if (bytes instanceof Uint8Array) return bytes;
    if (bytes instanceof ArrayBuffer) return new Uint8Array(bytes);
    throw new TypeError('openNote: the note must be a Uint8Array or an ArrayBuffer');
}

class Note {
    #module;
    #dir;
    #name;
    #pages = [];
    #layerNames;
    #closed = false;

    constructor(module, dir, name) {
        this.#module = module;
        this.#dir = dir;
        this.#name = name;
        this.#layerNames = module.layerNames();
        this.log = '';
    }

    // Runs one of the module's calls on this note, from the note's folder so that messages
    // name the note as it was given.
    #call(name, ...args) {
        if (this.#closed) throw new Error('the note is closed');
        callLog = [];
        this.#module.FS.chdir(this.#dir);
        const result = this.#module[name](this.#name, ...args);
        this.log = callLog.join('\n');
        if (result && result.error !== undefined) throw new NoteError(result.error, result.code, this.log);
        return result;
    }

    readPages() {
        this.#pages = this.#call('pages');
    }

    #page(page) {
        if (this.#closed) throw new Error('the note is closed');
        if (!this.#pages.includes(page))
            throw new RangeError(`page ${page} is not in the note (pages: ${this.#pages.join(', ')})`);
        return page;
    }

    get pageCount() {
        return this.#pages.length;
    }

    // The page numbers of the note's index, ascending: 1 to pageCount for most notes.
    get pages() {
        return [...this.#pages];
    }

    pageSize(page) {
        this.#page(page);
        return this.#call('pageSize');
    }

    // The page's layers, top first.
    layers(page) {
        return this.#call('layers', this.#page(page));
    }

    render(page, { scale = 1, layers, background = 'white' } = {}) {
        this.#page(page);
        if (!(scale > 0 && (scale <= 1 || (Number.isInteger(scale) && scale <= MAX_SCALE))))
            throw new RangeError(`scale ${scale}: a number above 0 and up to 1, or a whole number up to ${MAX_SCALE}`);
        if (background !== 'white' && background !== 'transparent')
            throw new RangeError(`background ${background}: "white" or "transparent"`);
        const only = layers ?? [];
        if (!Array.isArray(only)) throw new TypeError('layers: an array of layer names');
        // As notetool's --layers: an empty list is a mistake, not a blank page.
        if (layers && only.length === 0) throw new RangeError('layers: the list is empty');
        for (const name of only)
            if (!this.#layerNames.includes(name))
                throw new RangeError(`unknown layer ${name} (known: ${this.#layerNames.join(', ')})`);
        const image = this.#call('render', page, scale, only, background === 'transparent');
        return { width: image.width, height: image.height, data: new Uint8ClampedArray(image.data) };
    }

    strokes(page, { width = 1404, height = 1872 } = {}) {
        this.#page(page);
        if (!(Number.isInteger(width) && Number.isInteger(height) && width > 0 && height > 0))
            throw new RangeError(`image size ${width}x${height}: whole numbers above 0`);
        return this.#call('strokes', page, width, height);
    }

    close() {
        if (this.#closed) return;
        this.#closed = true;
        const FS = this.#module.FS;
        FS.unlink(`${this.#dir}/${this.#name}`);
        FS.chdir('/');
        FS.rmdir(this.#dir);
    }
}

export async function openNote(bytes, { name = 'note.note' } = {}) {
    const data = noteBytes(bytes);
    if (typeof name !== 'string' || name === '' || name.includes('/') || name === '.' || name === '..')
        throw new TypeError(`openNote: ${name} is not a file name`);
    const module = await loadModule();
    const dir = `/notes/${++nextNote}`;
    module.FS.mkdirTree(dir);
    module.FS.writeFile(`${dir}/${name}`, data);
    const note = new Note(module, dir, name);
    try {
        note.readPages();
    } catch (error) {
        note.close();
        throw error;
    }
    return note;
}
