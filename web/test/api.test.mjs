// The package in Node.js, held to notetool's answers for the same notes.

import assert from 'node:assert/strict';
import { existsSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { describe, test, before } from 'node:test';
import { execFileSync } from 'node:child_process';

import {
    distDir, firstDifference, missing, notesMaker, notetoolError, readPng, runNotetool, samplePath, tempDir,
} from './support.mjs';

const skip = missing();
const { openNote, NoteError } = skip ? {} : await import(join(distDir, 'index.js'));
const sampleBytes = readFileSync(samplePath);
const openSample = () => openNote(sampleBytes, { name: 'sample.note' });

describe('a note as notetool info sees it', { skip }, () => {
    test('page count, layers and sizes on paper', async () => {
        const info = JSON.parse(runNotetool(['info', '--json', samplePath])).notes[0];
        const note = await openSample();
        assert.equal(note.pageCount, info.pageCount);
        assert.deepEqual(note.pages, info.pages.map((page) => page.number));
        for (const page of info.pages) assert.deepEqual(note.layers(page.number), page.layers, `page ${page.number}`);
        // A PDF page's MediaBox is the page's size on paper.
        const dir = tempDir();
        runNotetool(['render', samplePath, '--pages', '1', '-o', join(dir, 'p.pdf')]);
        const box = readFileSync(join(dir, 'p.pdf'), 'latin1').match(/\/MediaBox \[ ?0 0 ([\d.]+) ([\d.]+) ?\]/);
        const size = note.pageSize(1);
        assert.ok(box, 'the PDF has a MediaBox');
        assert.ok(Math.abs(size.widthPt - Number(box[1])) < 0.01 && Math.abs(size.heightPt - Number(box[2])) < 0.01,
            `${size.widthPt} x ${size.heightPt} pt, the PDF ${box[1]} x ${box[2]}`);
        assert.equal(size.dpi, Number(info.header.DEVICE_DPI));
        assert.deepEqual([size.width, size.height], [1404, 1872]);
        note.close();
    });
});

describe('pixels as notetool render gives them', { skip }, () => {
    let note, dir;
    before(async () => {
        note = await openSample();
        dir = tempDir();
    });
    const cases = [
        { scale: 0.5, args: [] },
        { scale: 1, args: [] },
        { scale: 2, args: [] },
        { scale: 0.25, args: ['--transparent'], options: { background: 'transparent' } },
        { scale: 1, args: ['--layers', 'BGLAYER,LAYER1'], options: { layers: ['BGLAYER', 'LAYER1'] } },
    ];
    for (const { scale, args, options = {} } of cases)
        test(`scale ${scale} ${args.join(' ')}`, () => {
            for (const page of note.pages) {
                const out = join(dir, `p${page}.png`);
                runNotetool(['render', samplePath, '--pages', String(page), '--scale', String(scale), ...args, '-o', out]);
                const image = note.render(page, { scale, ...options });
                assert.ok(image.data instanceof Uint8ClampedArray);
                assert.equal(firstDifference(image, readPng(out)), null, `page ${page}`);
            }
        });
    test('arguments the module does not take are refused before it runs', () => {
        assert.throws(() => note.render(1, { scale: 1.5 }), RangeError);
        assert.throws(() => note.render(1, { layers: ['PAPER'] }), /unknown layer PAPER/);
        assert.throws(() => note.render(1, { layers: [] }), /empty/);
        assert.throws(() => note.render(1, { background: 'black' }), RangeError);
        assert.throws(() => note.render(note.pages.at(-1) + 1), RangeError);
    });
});

describe('strokes as notetool strokes gives them', { skip }, () => {
    test('every page, at two image sizes', async () => {
        const note = await openSample();
        let count = 0;
        for (const page of note.pages)
            for (const [width, height] of [[1404, 1872], [300, 400]]) {
                const expected = JSON.parse(
                    runNotetool(['strokes', samplePath, '--page', String(page), '--size', `${width}x${height}`]));
                const strokes = note.strokes(page, { width, height });
                assert.deepEqual(strokes, expected.strokes, `page ${page} at ${width}x${height}`);
                count += strokes.length;
            }
        assert.ok(count > 0, 'the sample has strokes');
        note.close();
    });
});

describe('notes the library refuses', { skip }, () => {
    test('an error in notetool\'s words, with the status and the log', async () => {
        const dir = tempDir();
        const garbage = Buffer.alloc(4096, 0x5a);
        writeFileSync(join(dir, 'garbage.note'), garbage);
        const error = await openNote(garbage, { name: 'garbage.note' }).then(() => null, (e) => e);
        assert.ok(error instanceof NoteError, String(error));
        assert.equal(`notetool: ${error.message}`, notetoolError(['info', 'garbage.note'], dir));
        assert.match(error.message, new RegExp(`\\(code ${error.code}\\)$`));
        assert.notEqual(error.code, 0);
        assert.equal(typeof error.log, 'string');
    });

    test('every hostile note: a NoteError where the page library refuses it, and the instance lives on', async (t) => {
        if (!existsSync(notesMaker)) return t.skip(`no ${notesMaker}: the native build's tests make the notes`);
        const dir = tempDir();
        execFileSync(notesMaker, [dir]);
        const catalogue = readFileSync(join(dir, 'hostile', 'catalogue.tsv'), 'utf8').trim().split('\n');
        const printed = [];
        const { log, error } = console;
        console.log = console.error = (...args) => printed.push(args.join(' '));
        let logged = 0;
        try {
            for (const line of catalogue) {
                const [number, refused, attack] = line.split('\t');
                const failures = [];
                try {
                    const note = await openNote(readFileSync(join(dir, 'hostile', `${number}.note`)));
                    for (const page of note.pages)
                        for (const call of [() => note.render(page), () => note.strokes(page), () => note.layers(page)])
                            try {
                                call();
                            } catch (e) {
                                failures.push(e);
                            }
                    note.close();
                } catch (e) {
                    failures.push(e);
                }
                for (const e of failures) {
                    assert.ok(e instanceof NoteError, `${attack}: ${e}`);
                    if (e.log) ++logged;
                }
                assert.equal(failures.length > 0, refused === '1', `${attack}: refused by the page library: ${refused}`);
                const sample = await openSample();
                assert.equal(sample.render(1, { scale: 0.1 }).width, 140, `after ${attack}`);
                sample.close();
            }
        } finally {
            Object.assign(console, { log, error });
        }
        assert.deepEqual(printed, [], 'nothing reaches the console');
        assert.ok(logged > 0, 'the library\'s log comes with the errors');
    });
});

describe('a note\'s life', { skip }, () => {
    test('many notes at once, and a closed note refuses its calls', async () => {
        const [a, b] = await Promise.all([openSample(), openSample()]);
        a.close();
        a.close();
        assert.throws(() => a.render(1), /closed/);
        assert.throws(() => a.layers(1), /closed/);
        assert.equal(b.render(1, { scale: 0.1 }).height, 187);
        b.close();
        await assert.rejects(openNote('not bytes'), TypeError);
        await assert.rejects(openNote(sampleBytes, { name: '../x' }), TypeError);
        const fromBuffer = await openNote(sampleBytes.buffer.slice(sampleBytes.byteOffset, sampleBytes.byteOffset + sampleBytes.length));
        assert.equal(fromBuffer.pageCount, (await openSample()).pageCount);
    });
});
