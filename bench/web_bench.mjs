// The web package's three figures, in one run on this machine:
//  - a full handwritten page composed to RGBA at 1404 px, WebAssembly (Node.js) against the
//    native build doing the same work (web-native-render), medians of wall and CPU time, and
//    the module's own part of it (its render() called directly, without the new array);
//  - the first page of the 60-page note on screen after the file is chosen in the viewer,
//    in headless Chromium (the viewer's performance measure), median of fresh page loads;
//  - the module's .wasm and JavaScript after gzip -9.
//
// Usage: node bench/web_bench.mjs NATIVE_BUILD_DIR [REPEATS]
// with the native build's benchmarks built (make-handwritten-note, web-native-render) and
// the package built (cd web && npm ci && npm run build).

import { execFileSync, spawnSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { join, resolve } from 'node:path';
import { gzipSync } from 'node:zlib';

import { launch, serve } from '../web/test/browser.mjs';
import { distDir, tempDir } from '../web/test/support.mjs';

const [buildDir, repeatText = '15'] = process.argv.slice(2);
if (!buildDir) {
    console.error('usage: node bench/web_bench.mjs NATIVE_BUILD_DIR [REPEATS]');
    process.exit(2);
}
const repeats = Number(repeatText);
const median = (values) => [...values].sort((a, b) => a - b)[values.length >> 1];
const ms = (value) => `${value.toFixed(1)} ms`;

const note = join(tempDir(), 'handwritten.note');
execFileSync(resolve(buildDir, 'bench', 'make-handwritten-note'), [note]);
const bytes = readFileSync(note);

function nativeRender() {
    const run = spawnSync(resolve(buildDir, 'bench', 'web-native-render'), [note, '1', '1', String(repeats)], {
        encoding: 'utf8',
        maxBuffer: 1 << 26,
    });
    if (run.status !== 0) throw new Error(`web-native-render: ${run.stderr}`);
    const runs = run.stderr.trim().split('\n').map((line) => line.split(' ').map(Number));
    return { wall: median(runs.map((run) => run[0])), cpu: median(runs.map((run) => run[1])) };
}

async function wasmRender() {
    const { openNote } = await import(join(distDir, 'index.js'));
    const opened = await openNote(bytes, { name: 'handwritten.note' });
    opened.render(1); // compiles the hot paths
    const walls = [], cpus = [];
    for (let i = 0; i < repeats; ++i) {
        const cpu = process.cpuUsage();
        const start = performance.now();
        opened.render(1);
        walls.push(performance.now() - start);
        const used = process.cpuUsage(cpu);
        cpus.push((used.user + used.system) / 1000);
    }
    opened.close();
    // The module's own work, without the new array: its render() called directly.
    const { default: createLibNote } = await import(join(distDir, 'libnote.mjs'));
    const module = await createLibNote({ wasmBinary: readFileSync(join(distDir, 'libnote.wasm')), print() {}, printErr() {} });
    module.FS.writeFile('/handwritten.note', bytes);
    const own = [];
    for (let i = 0; i <= repeats; ++i) {
        const cpu = process.cpuUsage();
        module.render('/handwritten.note', 1, 1, [], false);
        const used = process.cpuUsage(cpu);
        if (i > 0) own.push((used.user + used.system) / 1000);
    }
    // What render() spends on handing out a new array: a copy of the image's size.
    const image = new Uint8ClampedArray(1404 * 1872 * 4);
    const copies = [];
    for (let i = 0; i < repeats; ++i) {
        const start = performance.now();
        new Uint8ClampedArray(image);
        copies.push(performance.now() - start);
    }
    return { wall: median(walls), cpu: median(cpus), own: median(own), copy: median(copies) };
}

async function firstPageOnScreen() {
    const noteDir = tempDir();
    execFileSync('cp', [note, join(noteDir, 'handwritten.note')]);
    const http = await serve(join(distDir, 'viewer'));
    const browser = await launch();
    const times = [];
    try {
        for (let i = 0; i < Math.min(repeats, 7); ++i) {
            const page = await browser.newPage();
            await page.goto(`${http.origin}/`);
            await (await page.$('#file')).uploadFile(join(noteDir, 'handwritten.note'));
            await page.waitForFunction(() => performance.getEntriesByName('libnote-first-page').length > 0);
            times.push(await page.evaluate(() => performance.getEntriesByName('libnote-first-page')[0].duration));
            await page.close();
        }
    } finally {
        await browser.close();
        http.server.close();
    }
    return median(times);
}

const native = nativeRender();
const wasm = await wasmRender();
const screen = await firstPageOnScreen();
const gzipped = ['libnote.wasm', 'libnote.mjs', 'index.js']
    .map((file) => gzipSync(readFileSync(join(distDir, file)), { level: 9 }).length)
    .reduce((a, b) => a + b);

console.log(`full handwritten page to RGBA at 1404 px, median of ${repeats}:`);
console.log(`  native       ${ms(native.wall)} wall, ${ms(native.cpu)} CPU`);
console.log(`  WebAssembly  ${ms(wasm.wall)} wall, ${ms(wasm.cpu)} CPU (Node.js ${process.versions.node}), ` +
    `of which ${ms(wasm.copy)} copying the image into a new array`);
console.log(`  the module's own work ${ms(wasm.own)} CPU (${(wasm.own / native.cpu).toFixed(2)}x), without the new array`);
console.log(`  ratio        ${(wasm.wall / native.wall).toFixed(2)}x wall, ${(wasm.cpu / native.cpu).toFixed(2)}x CPU (at most 2x)`);
console.log(`first page of the ${bytes.length >> 20} MB 60-page note on screen after choosing it: ${ms(screen)} (at most 300 ms)`);
console.log(`libnote.wasm + libnote.mjs + index.js, gzip -9: ${(gzipped / 1024).toFixed(1)} KB (at most 300 KB)`);
