// The viewer page in headless Chromium, held to notetool's pixels.

import assert from 'node:assert/strict';
import { existsSync, mkdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, before, describe, test } from 'node:test';

import { canvasImage, chromiumPath, launch, serve } from './browser.mjs';
import { distDir, firstDifference, missing, readPng, runNotetool, samplePath, tempDir, webDir } from './support.mjs';

const skip = missing() || (!existsSync(chromiumPath) && `no Chromium at ${chromiumPath}`);
const artifacts = join(webDir, 'test-artifacts');

describe('the viewer', { skip }, () => {
    let browser, http, page, dir, info;
    const label = () => page.$eval('#page-label', (element) => element.textContent);
    const drawn = (number) =>
        page.waitForFunction((n) => !document.getElementById('page').hidden && document.getElementById('page').dataset.page === n,
            {}, String(number));
    // Resolves once the page on screen has been drawn again.
    const redrawn = async () => {
        const draws = await page.$eval('#page', (canvas) => Number(canvas.dataset.draws));
        return () => page.waitForFunction((n) => Number(document.getElementById('page').dataset.draws) > n, {}, draws);
    };
    const notetoolPage = (name, args) => {
        runNotetool(['render', samplePath, '--pages', '1', ...args, '-o', join(dir, name)]);
        return readPng(join(dir, name));
    };

    before(async () => {
        dir = tempDir();
        writeFileSync(join(dir, 'broken.note'), Buffer.alloc(2048, 0x42));
        info = JSON.parse(runNotetool(['info', '--json', samplePath])).notes[0];
        http = await serve(join(distDir, 'viewer'), { '/notes/sample.note': samplePath });
        browser = await launch();
        page = await browser.newPage();
        await page.setViewport({ width: 1600, height: 1000, deviceScaleFactor: 1 });
        page.on('pageerror', (error) => assert.fail(`the page threw: ${error.message}`));
        await page.goto(`${http.origin}/`);
    });
    after(async () => {
        await browser?.close();
        http?.server.close();
    });

    test('opens the sample through the file input and shows notetool\'s pixels', async () => {
        await page.select('#zoom', '1');
        await (await page.$('#file')).uploadFile(samplePath);
        await drawn(info.pages[0].number);
        assert.equal(await label(), `Page 1 of ${info.pageCount}`);
        assert.equal(firstDifference(await canvasImage(page, '#page'), notetoolPage('p1.png', [])), null);
        // Thumbnails are filled as they come into sight.
        await page.waitForFunction(() => document.querySelector('#thumbs canvas').width === 140);
        assert.equal(await page.$$eval('#thumbs button', (buttons) => buttons.length), info.pageCount);
        const paper = await page.$eval('#page-size', (style) => style.textContent);
        assert.match(paper, /@page \{ size: 447\.\d+pt 596\.\d+pt; margin: 0; \}/);
    });

    test('hiding a layer removes its pixels', async () => {
        const [top, ...rest] = info.pages[0].layers;
        const again = await redrawn();
        await page.$eval(`#layers input[data-layer="${top}"]`, (box) => box.click());
        await again();
        const shown = await canvasImage(page, '#page');
        assert.equal(firstDifference(shown, notetoolPage('rest.png', ['--layers', rest.join(',')])), null);
        assert.notEqual(firstDifference(shown, notetoolPage('all.png', [])), null, `${top} has pixels of its own`);
        mkdirSync(artifacts, { recursive: true });
        const rechecked = await redrawn();
        await page.$eval(`#layers input[data-layer="${top}"]`, (box) => box.click());
        await rechecked();
        const fitted = await redrawn();
        await page.select('#zoom', 'page');
        await fitted();
        await page.screenshot({ path: join(artifacts, 'viewer.png') });
    });

    test('keys turn the pages', async () => {
        for (const [key, number] of [['End', info.pageCount], ['ArrowLeft', info.pageCount - 1], ['Home', 1], ['PageDown', 2]]) {
            await page.keyboard.press(key);
            assert.equal(await label(), `Page ${number} of ${info.pageCount}`, key);
            await drawn(info.pages[number - 1].number);
        }
    });

    test('a broken file shows the library\'s reason, and the viewer opens the sample after it', async () => {
        await (await page.$('#file')).uploadFile(join(dir, 'broken.note'));
        await page.waitForSelector('#error:not([hidden])');
        const error = await page.$eval('#error', (element) => element.textContent);
        assert.match(error, /broken\.note: not a readable note: .* \(code \d+\)/);
        assert.equal(await label(), 'No note');
        await (await page.$('#file')).uploadFile(samplePath);
        await drawn(1);
        assert.equal(await label(), `Page 1 of ${info.pageCount}`);
        assert.equal(await page.$eval('#error', (element) => element.hidden), true);
    });

    test('?file= opens a note served beside the page, on a phone\'s screen', async () => {
        const phone = await browser.newPage();
        await phone.setViewport({ width: 390, height: 800, deviceScaleFactor: 1 });
        await phone.goto(`${http.origin}/?file=notes/sample.note`);
        await phone.waitForFunction(() => document.getElementById('page').dataset.page === '1');
        const widths = await phone.evaluate(() => [document.documentElement.scrollWidth, innerWidth]);
        assert.ok(widths[0] <= widths[1], `the page is ${widths[0]} px wide on a ${widths[1]} px screen`);
        assert.equal(await phone.$eval('#page', (canvas) => canvas.getBoundingClientRect().right <= innerWidth), true);
        await phone.close();
    });
});
