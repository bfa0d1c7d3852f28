// What the package's tests share: the native build's programs, whose answers the module is
// held to, and a PNG reader for notetool's pictures.

import { execFileSync } from 'node:child_process';
import { existsSync, mkdtempSync, readFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { inflateSync } from 'node:zlib';

export const webDir = dirname(dirname(fileURLToPath(import.meta.url)));
export const sourceDir = resolve(process.env.LIBNOTE_SOURCE_DIR ?? dirname(webDir));
export const samplePath = join(sourceDir, 'examples', 'sample.note');
export const distDir = join(webDir, 'dist');

// The native build's programs: from ctest's environment, else the README's build folder.
export const notetool = resolve(process.env.NOTETOOL ?? join(sourceDir, 'build', 'tools', 'notetool', 'notetool'));
export const notesMaker =
    resolve(process.env.LIBNOTE_NOTES_MAKER ?? join(sourceDir, 'build', 'tests', 'python', 'make_python_notes'));

// Why the tests cannot run, or false.
export function missing() {
    if (!existsSync(join(distDir, 'index.js'))) return 'dist/ is not built: npm run build';
    if (!existsSync(notetool)) return `no notetool at ${notetool}: build the native tree or set NOTETOOL`;
    return false;
}

export function tempDir() {
    return mkdtempSync(join(tmpdir(), 'libnote-web-'));
}

export function runNotetool(args, options = {}) {
    return execFileSync(notetool, args, { encoding: options.encoding ?? 'utf8', cwd: options.cwd, stdio: ['ignore', 'pipe', 'pipe'] });
}

// notetool's error line for a note that it refuses.
export function notetoolError(args, cwd) {
    try {
        runNotetool(args, { cwd });
    } catch (error) {
        return error.stderr.toString().trim();
    }
    throw new Error(`notetool ${args.join(' ')} succeeded`);
}

function paeth(a, b, c) {
    const p = a + b - c;
    const pa = Math.abs(p - a), pb = Math.abs(p - b), pc = Math.abs(p - c);
    return pa <= pb && pa <= pc ? a : pb <= pc ? b : c;
}

// Undoes PNG's row filters; bpp is bytes a pixel (at least 1).
function unfilter(raw, height, rowBytes, bpp) {
    const out = Buffer.alloc(height * rowBytes);
    for (let y = 0; y < height; ++y) {
        const type = raw[y * (rowBytes + 1)];
        const row = raw.subarray(y * (rowBytes + 1) + 1, (y + 1) * (rowBytes + 1));
        for (let x = 0; x < rowBytes; ++x) {
            const a = x >= bpp ? out[y * rowBytes + x - bpp] : 0;
            const b = y > 0 ? out[(y - 1) * rowBytes + x] : 0;
            const c = x >= bpp && y > 0 ? out[(y - 1) * rowBytes + x - bpp] : 0;
            const predictor = [0, a, b, (a + b) >> 1, paeth(a, b, c)][type];
            out[y * rowBytes + x] = (row[x] + predictor) & 0xff;
        }
    }
    return out;
}

// A PNG as notetool writes them (palette, grey, grey and alpha; 8 bits or fewer, not
// interlaced) as RGBA.
export function readPng(path) {
    const file = readFileSync(path);
    let at = 8;
    let header, palette = [], alpha = [];
    const data = [];
    while (at < file.length) {
        const length = file.readUInt32BE(at);
        const type = file.toString('latin1', at + 4, at + 8);
        const body = file.subarray(at + 8, at + 8 + length);
        if (type === 'IHDR')
            header = { width: body.readUInt32BE(0), height: body.readUInt32BE(4), depth: body[8], colour: body[9] };
        else if (type === 'PLTE') for (let i = 0; i < length; i += 3) palette.push([body[i], body[i + 1], body[i + 2]]);
        else if (type === 'tRNS') alpha = [...body];
        else if (type === 'IDAT') data.push(body);
        at += length + 12;
    }
    const { width, height, depth, colour } = header;
    const channels = { 0: 1, 3: 1, 4: 2 }[colour];
    if (!channels || depth > 8) throw new Error(`${path}: colour type ${colour}, depth ${depth} not read here`);
    const rowBytes = Math.ceil((width * channels * depth) / 8);
    const rows = unfilter(inflateSync(Buffer.concat(data)), height, rowBytes, Math.max(1, (channels * depth) >> 3));
    const rgba = new Uint8ClampedArray(width * height * 4);
    for (let y = 0; y < height; ++y)
        for (let x = 0; x < width; ++x) {
            const o = (y * width + x) * 4;
            if (colour === 3) {
                const bit = x * depth;
                const index = (rows[y * rowBytes + (bit >> 3)] >> (8 - depth - (bit & 7))) & ((1 << depth) - 1);
                rgba.set([...palette[index], alpha[index] ?? 255], o);
            } else {
                const grey = rows[y * rowBytes + x * channels];
                rgba.set([grey, grey, grey, channels === 2 ? rows[y * rowBytes + x * 2 + 1] : 255], o);
            }
        }
    return { width, height, data: rgba };
}

// Where two images first differ, or null: a message that says more than "not equal".
export function firstDifference(actual, expected) {
    if (actual.width !== expected.width || actual.height !== expected.height)
        return `size ${actual.width}x${actual.height}, expected ${expected.width}x${expected.height}`;
    const a = actual.data, e = expected.data;
    for (let i = 0; i < e.length; ++i)
        if (a[i] !== e[i]) {
            const pixel = i >> 2;
            return `pixel (${pixel % expected.width}, ${Math.floor(pixel / expected.width)}): ` +
                `[${a.subarray(pixel * 4, pixel * 4 + 4)}], expected [${e.subarray(pixel * 4, pixel * 4 + 4)}]`;
        }
    return null;
}
