// npm pack's tarball, installed offline into a project of its own, as a user would.

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';

import { missing, samplePath, tempDir, webDir } from './support.mjs';

test('the packed package installs offline and reads a note', { skip: missing() }, () => {
    const dir = tempDir();
    const npm = (args, cwd) => execFileSync('npm', [...args, '--no-audit', '--no-fund'], { cwd, encoding: 'utf8' });
    npm(['pack', '--pack-destination', dir], webDir);
    const tarball = readdirSync(dir).find((name) => name.endsWith('.tgz'));
    writeFileSync(join(dir, 'package.json'), JSON.stringify({ name: 'host', type: 'module', private: true }));
    npm(['install', '--offline', join(dir, tarball)], dir);
    writeFileSync(join(dir, 'host.js'), `
        import { openNote } from '@libnote/web';
        import { readFileSync } from 'node:fs';
        const note = await openNote(readFileSync(${JSON.stringify(samplePath)}));
        const image = note.render(1, { scale: 0.5 });
        console.log(JSON.stringify([note.pageCount, image.width, image.data.length]));`);
    const [pages, width, length] = JSON.parse(execFileSync('node', ['host.js'], { cwd: dir, encoding: 'utf8' }));
    assert.ok(pages > 0);
    assert.deepEqual([width, length], [702, 702 * 936 * 4]);
    const installed = readdirSync(join(dir, 'node_modules')).filter((name) => !name.startsWith('.'));
    assert.deepEqual(installed, ['@libnote'], 'no runtime dependencies');
});
